#include "simulator/terminal_model.h"

#include "simulator/request_frame.h"

#include <algorithm>

namespace simulator {

namespace {

constexpr std::uint8_t kAddressNibble = 0x0F;
constexpr std::uint8_t kReplyBase = 0xF0;
constexpr std::uint8_t kInitCommand = 0xC0;
constexpr std::uint8_t kRequestCommand = 0x40;
constexpr std::uint8_t kDataCommand = 0x01;
constexpr std::uint8_t kEndCommand = 0x02;

// For every PAD alike, CRC included: the terminal knows just these bytes.
const Bytes kInitBody = {0xC0, 0x04, 0x00, 0x78, 0x01, 0x2C, 0xB8, 0xE4};
const Bytes kInitAnswerBody = {0xE0, 0x04, 0x00, 0x78, 0x01, 0x2C, 0x45, 0xBB};

constexpr std::size_t kInitSize = 9;
constexpr std::size_t kDataHeaderSize = 3;
constexpr std::size_t kLargestBlock = 30720;

const Bytes kEndFrame = {kEndCommand, 0x00, 0x00};
const Bytes kBlockAccepted = {0x05};
const Bytes kLoadAccepted = {0x05, 0x00, 0x00};
const Bytes kLoadRefused = {0x06, 0x00, 0x00};
constexpr std::uint8_t kOtherAnswer = 0x15;

// Reasons in the answer to a refused request and to a refused block.
constexpr std::uint8_t kWrongRequest = 0x01;
constexpr std::uint8_t kNoRoom = 0x02;
constexpr std::uint8_t kNoLoadUnderWay = 'S';
constexpr std::uint8_t kWrongLength = 'L';
constexpr std::uint8_t kMoreThanAnnounced = 'O';
constexpr std::uint8_t kCannotStore = 'W';

Bytes initAnswer(int pad) {
    Bytes answer = kInitAnswerBody;
    answer.insert(answer.begin(), static_cast<std::uint8_t>(kReplyBase + pad));
    return answer;
}

Bytes blockRefused(std::uint8_t reason) {
    return {0x06, 0x00, 0x00, reason};
}

Bytes requestAnswer(int pad, std::uint8_t reason) {
    return withCrc({static_cast<std::uint8_t>(kReplyBase + pad), 0x40, 0x02, 0x00, reason});
}

/// What the host is to see in the place of an answer.
void applyFault(const Fault& fault, Bytes& answer) {
    switch (fault.kind) {
    case FaultKind::silence:
        answer.clear();
        break;
    case FaultKind::wrong:
        if (fault.step == Step::data) {
            answer = {kOtherAnswer};
        } else if (!answer.empty()) {
            answer.back() = static_cast<std::uint8_t>(~answer.back());
        }
        break;
    case FaultKind::cut:
        answer.resize(std::min(fault.count, answer.size()));
        break;
    case FaultKind::longer:
        answer.resize(answer.size() + fault.count, 0x00);
        break;
    case FaultKind::replace:
        answer = fault.bytes;
        break;
    case FaultKind::late:
    case FaultKind::split:
    case FaultKind::pull:
        break; // The bytes stay as they are.
    }
}

const Fault* findKind(const std::vector<Fault>& faults, FaultKind kind) {
    const auto found = std::find_if(faults.begin(), faults.end(),
                                    [&](const Fault& fault) { return fault.kind == kind; });
    return found == faults.end() ? nullptr : &*found;
}

} // namespace

TerminalModel::TerminalModel(std::string name, std::string storeFolder, std::vector<Fault> faults,
                             Journal& journal)
    : m_name(std::move(name)), m_store(std::move(storeFolder)), m_faults(std::move(faults)),
      m_journal(journal) {
}

std::vector<Action> TerminalModel::receive(const std::uint8_t* bytes, std::size_t size) {
    m_received.insert(m_received.end(), bytes, bytes + size);
    std::vector<Action> actions;
    Frame frame{};
    while (findFrame(frame)) {
        const std::vector<Action> now = takeFrame(frame);
        actions.insert(actions.end(), now.begin(), now.end());
    }
    return actions;
}

void TerminalModel::lineDown() {
    if (m_state == State::loading) {
        trace(padName() + ": the line went down after " + std::to_string(m_stored) + " of " +
              std::to_string(m_announced) + " bytes, nothing is stored");
    }
    if (!m_received.empty()) {
        discardAll("the line went down in the middle of a frame");
    }
    m_store.drop();
    m_toSkip = 0;
    m_state = State::asleep;
}

void TerminalModel::trace(const std::string& line) {
    m_journal.trace(m_name + " " + line);
}

std::string TerminalModel::padName() const {
    return "PAD " + std::to_string(m_pad);
}

/// \return false when more bytes must come first
bool TerminalModel::findFrame(Frame& frame) {
    takeReceived(0);
    if (m_received.empty()) {
        return false;
    }
    frame = {};
    bool found = true;
    switch (m_received[0]) {
    case kDataCommand:
        found = findDataFrame(frame);
        break;
    case kEndCommand:
        frame = {Step::end, kEndFrame.size(), ""};
        break;
    default:
        found = findAddressedFrame(frame);
        break;
    }
    return found && (!frame.objection.empty() || m_received.size() >= frame.size);
}

bool TerminalModel::findDataFrame(Frame& frame) const {
    if (m_received.size() < kDataHeaderSize) {
        return false;
    }
    const std::size_t length = static_cast<std::size_t>(m_received[1] << 8) + m_received[2];
    frame = {Step::data, kDataHeaderSize + length, ""};
    if (length == 0 || length > kLargestBlock) {
        frame.objection = std::to_string(length) + " bytes are not 1 to 30720";
    }
    return true;
}

bool TerminalModel::findAddressedFrame(Frame& frame) {
    if ((m_received[0] & kAddressNibble) != kAddressNibble) {
        discardAll("no frame begins with it");
        return false;
    }
    if (m_received.size() < 2) {
        return false;
    }
    if (m_received[1] == kInitCommand) {
        frame = {Step::init, kInitSize, ""};
        return true;
    }
    if (m_received[1] != kRequestCommand) {
        discardAll("the second byte is no command");
        return false;
    }
    if (m_received.size() < kRequestHeaderSize) {
        return false;
    }
    frame = {Step::request, requestFrameSize(m_received.data()), ""};
    const std::size_t count = sizeCount(m_received.data());
    if (count > kLargestSizeCount) {
        frame.objection = std::to_string(count) + " size bytes are more than 4";
    }
    return true;
}

/// Takes bytes off what has come, and those that are to be skipped with them.
void TerminalModel::takeReceived(std::size_t size) {
    const std::size_t taken = std::min(size + m_toSkip, m_received.size());
    m_toSkip = size + m_toSkip - taken;
    m_received.erase(m_received.begin(), m_received.begin() + static_cast<std::ptrdiff_t>(taken));
}

void TerminalModel::discardAll(const std::string& reason) {
    constexpr std::size_t kShown = 16;
    const std::size_t shown = std::min(m_received.size(), kShown);
    trace("discarded " + std::to_string(m_received.size()) + " bytes that begin with " +
          hexadecimal(m_received.data(), shown) + ": " + reason);
    m_received.clear();
}

std::vector<Action> TerminalModel::takeFrame(const Frame& frame) {
    const std::size_t come = std::min(frame.size, m_received.size());
    const Bytes bytes(m_received.begin(), m_received.begin() + static_cast<std::ptrdiff_t>(come));
    takeReceived(frame.size);
    m_journal.frameFromHost(bytes.data(), bytes.size());
    m_block += frame.step == Step::data ? 1 : 0;
    const std::vector<Fault> faults = faultsOf(m_faults, frame.step, m_block);
    const Bytes acceptance = acceptanceOf(frame.step, bytes[0] >> 4);
    const bool refused = std::any_of(faults.begin(), faults.end(),
                                     [&](const Fault& fault) { return fault.refuses(acceptance); });
    return actionsFor(faults, answerTo(frame, bytes, refused));
}

/// The answer by which a terminal accepts a frame.
/// \param pad the one that the frame is addressed to, if it is addressed
Bytes TerminalModel::acceptanceOf(Step step, int pad) {
    switch (step) {
    case Step::init:
        return initAnswer(pad);
    case Step::request:
        return requestAnswer(pad, 0);
    case Step::data:
        return kBlockAccepted;
    case Step::end:
        return kLoadAccepted;
    }
    return {};
}

Bytes TerminalModel::answerTo(const Frame& frame, const Bytes& bytes, bool refusedByFault) {
    switch (frame.step) {
    case Step::init:
        return answerInit(bytes, refusedByFault);
    case Step::request:
        return answerRequest(frame, bytes, refusedByFault);
    case Step::data:
        return answerData(frame, bytes, refusedByFault);
    case Step::end:
        return answerEnd(bytes, refusedByFault);
    }
    return {};
}

/// Every refusal ends the load.
Bytes TerminalModel::refuse(const std::string& reason, Bytes answer) {
    trace("refused: " + reason);
    m_store.drop();
    m_state = State::asleep;
    return answer;
}

Bytes TerminalModel::answerInit(const Bytes& bytes, bool refusedByFault) {
    if (m_state == State::loading) {
        trace(padName() + ": the load is broken off by a new initialisation frame");
    }
    m_store.drop();
    m_state = State::asleep;
    const Bytes body(bytes.begin() + 1, bytes.end());
    if (body != kInitBody) {
        return refuse("initialisation frame: bytes after the address are " + hexadecimal(body) +
                          ", expected " + hexadecimal(kInitBody),
                      {});
    }
    m_pad = bytes[0] >> 4;
    if (refusedByFault) {
        return refuse("initialisation frame: a fault was asked for", initAnswer(m_pad));
    }
    m_state = State::awake;
    m_block = 0;
    trace(padName() + ": woken");
    return initAnswer(m_pad);
}

/// Why a request does not fit now; empty when it does.
std::string TerminalModel::objectionOfState(const Bytes& request) const {
    if (m_state == State::asleep) {
        return "the terminal was not woken";
    }
    if (m_state == State::loading) {
        return "a load is under way";
    }
    if (request[0] >> 4 != m_pad) {
        return "it is for PAD " + std::to_string(request[0] >> 4) + ", but " + padName() +
               " was woken";
    }
    return {};
}

Bytes TerminalModel::answerRequest(const Frame& frame, const Bytes& bytes, bool refusedByFault) {
    const int pad = bytes[0] >> 4;
    std::string objection = frame.objection.empty() ? objectionToRequest(bytes) : frame.objection;
    if (objection.empty()) {
        objection = objectionOfState(bytes);
    }
    if (!objection.empty()) {
        return refuse("request frame: " + objection, requestAnswer(pad, kWrongRequest));
    }
    if (refusedByFault) {
        return refuse("request frame: a fault was asked for", requestAnswer(pad, 0));
    }
    if (!m_store.begin(m_pad)) {
        return refuse("request frame: cannot write " + m_store.fileOf(m_pad),
                      requestAnswer(pad, kNoRoom));
    }
    m_announced = announcedSize(bytes);
    m_stored = 0;
    m_state = State::loading;
    trace(padName() + ": a load of " + std::to_string(m_announced) + " bytes is announced" +
          conceptText(bytes));
    m_journal.dataPhaseBegins();
    return requestAnswer(pad, 0);
}

Bytes TerminalModel::answerData(const Frame& frame, const Bytes& bytes, bool refusedByFault) {
    const std::string name = "block " + std::to_string(m_block);
    if (m_state != State::loading) {
        return refuse(name + ": no load is under way", blockRefused(kNoLoadUnderWay));
    }
    if (!frame.objection.empty()) {
        return refuse(name + ": " + frame.objection, blockRefused(kWrongLength));
    }
    const std::size_t length = frame.size - kDataHeaderSize;
    if (m_stored + length > m_announced) {
        return refuse(name + ": " + std::to_string(m_stored + length) +
                          " bytes are more than the " + std::to_string(m_announced) + " announced",
                      blockRefused(kMoreThanAnnounced));
    }
    if (refusedByFault) {
        return refuse(name + ": a fault was asked for", kBlockAccepted);
    }
    if (!m_store.append(bytes.data() + kDataHeaderSize, length)) {
        return refuse(name + ": cannot write " + m_store.fileOf(m_pad), blockRefused(kCannotStore));
    }
    m_stored += length;
    trace(padName() + ": " + name + ", " + std::to_string(m_stored) + " of " +
          std::to_string(m_announced) + " bytes");
    return kBlockAccepted;
}

Bytes TerminalModel::answerEnd(const Bytes& bytes, bool refusedByFault) {
    if (m_state == State::loading) {
        m_journal.dataPhaseEnds(m_block, m_stored);
    }
    if (bytes != kEndFrame) {
        return refuse("ending frame: " + hexadecimal(bytes) + ", expected 02 00 00", kLoadRefused);
    }
    if (m_state != State::loading) {
        return refuse("ending frame: no load is under way", kLoadRefused);
    }
    if (m_stored != m_announced) {
        return refuse("ending frame: " + std::to_string(m_stored) + " bytes came, " +
                          std::to_string(m_announced) + " were announced",
                      kLoadRefused);
    }
    if (refusedByFault) {
        return refuse("ending frame: a fault was asked for", kLoadAccepted);
    }
    if (!m_store.finish()) {
        return refuse("ending frame: cannot write " + m_store.fileOf(m_pad), kLoadRefused);
    }
    m_state = State::asleep;
    trace(padName() + ": complete, " + std::to_string(m_stored) + " bytes stored in " +
          m_store.fileOf(m_pad));
    return kLoadAccepted;
}

std::vector<Action> TerminalModel::actionsFor(const std::vector<Fault>& faults, Bytes answer) {
    Action action;
    for (const Fault& fault : faults) {
        trace("shows a fault: " + fault.text);
        applyFault(fault, answer);
        action.delay += fault.kind == FaultKind::late ? fault.time : std::chrono::milliseconds(0);
    }
    if (findKind(faults, FaultKind::pull) != nullptr) {
        action.pullsCable = true;
        return {action};
    }
    if (answer.empty()) {
        return {};
    }
    const Fault* split = findKind(faults, FaultKind::split);
    const std::size_t first = split == nullptr ? answer.size() : 1;
    action.bytes.assign(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(first));
    m_journal.answerToHost(action.bytes);
    std::vector<Action> actions = {action};
    if (split != nullptr && first < answer.size()) {
        const Bytes rest(answer.begin() + static_cast<std::ptrdiff_t>(first), answer.end());
        m_journal.answerToHost(rest);
        actions.push_back({split->time, rest, false});
    }
    return actions;
}

} // namespace simulator

#include "simulator/terminal_model.h"

#include <algorithm>
#include <iterator>

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
const Bytes kRequestConstants = {0x05, 0x01, 0x01, 0x60};

constexpr std::size_t kInitSize = 9;
constexpr std::size_t kRequestLengthOffset = 2;
constexpr std::size_t kRequestConstantsOffset = 3;
constexpr std::size_t kConceptLengthOffset = 7;
constexpr std::size_t kSizeTagOffset = 8;
constexpr std::size_t kSizeCountOffset = 9;
constexpr std::size_t kRequestHeaderSize = 10;
constexpr std::size_t kCrcSize = 2;
constexpr std::size_t kDataHeaderSize = 3;
constexpr std::size_t kEndSize = 3;
constexpr std::size_t kLargestBlock = 30720;
constexpr std::size_t kLargestSizeCount = 4;
constexpr std::uint8_t kSizeTag = 0x80;
constexpr std::uint8_t kFirstConceptTag = 0x81;
constexpr std::uint8_t kLastConceptTag = 0x8F;

const Bytes kBlockAccepted = {0x05};
const Bytes kLoadAccepted = {0x05, 0x00, 0x00};
const Bytes kLoadRefused = {0x06, 0x00, 0x00};
constexpr std::uint8_t kOtherAnswer = 0x15;

// Reasons in the answer to a refused block.
constexpr std::uint8_t kNoLoadUnderWay = 'S';
constexpr std::uint8_t kWrongLength = 'L';
constexpr std::uint8_t kMoreThanAnnounced = 'O';
constexpr std::uint8_t kCannotStore = 'W';

/// CRC-16/KERMIT, bit by bit.
std::uint16_t crcOf(const Bytes& bytes, std::size_t size) {
    std::uint16_t crc = 0;
    for (std::size_t i = 0; i < size; ++i) {
        crc = static_cast<std::uint16_t>(crc ^ bytes[i]);
        for (int bit = 0; bit < 8; ++bit) {
            crc = static_cast<std::uint16_t>((crc & 1) != 0 ? (crc >> 1) ^ 0x8408 : crc >> 1);
        }
    }
    return crc;
}

Bytes withCrc(Bytes bytes) {
    const std::uint16_t crc = crcOf(bytes, bytes.size());
    bytes.push_back(static_cast<std::uint8_t>(crc & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(crc >> 8));
    return bytes;
}

Bytes blockRefused(std::uint8_t reason) {
    return {0x06, 0x00, 0x00, reason};
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

std::string mismatch(const std::string& what, const Bytes& got, const Bytes& expected) {
    return what + " " + hexadecimal(got) + ", expected " + hexadecimal(expected);
}

} // namespace

TerminalModel::TerminalModel(std::string storeFolder, std::vector<Fault> faults, Journal& journal)
    : m_store(std::move(storeFolder)), m_faults(std::move(faults)), m_journal(journal) {
}

std::vector<Action> TerminalModel::receive(const std::uint8_t* bytes, std::size_t size) {
    m_received.insert(m_received.end(), bytes, bytes + size);
    std::vector<Action> actions;
    Frame frame{};
    while (nextFrame(frame)) {
        m_journal.frameFromHost(m_received.data(), frame.size);
        const std::size_t block = frame.step == Step::data ? m_block + 1 : 0;
        const Fault* fault = findFault(m_faults, frame.step, block);
        const Bytes answer = answerTo(frame, fault != nullptr && fault->refuses());
        const std::vector<Action> now = actionsFor(fault, answer);
        actions.insert(actions.end(), now.begin(), now.end());
        m_received.erase(m_received.begin(),
                         m_received.begin() + static_cast<std::ptrdiff_t>(frame.size));
    }
    return actions;
}

void TerminalModel::lineDown() {
    if (m_state == State::loading) {
        m_journal.trace(padName() + ": the line went down after " + std::to_string(m_stored) +
                        " of " + std::to_string(m_announced) + " bytes, nothing is stored");
    }
    m_store.drop();
    m_received.clear();
    m_state = State::asleep;
}

std::string TerminalModel::padName() const {
    return "PAD " + std::to_string(m_pad);
}

/// \return false when more bytes must come first
bool TerminalModel::nextFrame(Frame& frame) {
    if (m_received.empty()) {
        return false;
    }
    switch (m_received[0]) {
    case kDataCommand: {
        if (m_received.size() < kDataHeaderSize) {
            return false;
        }
        const std::size_t length = static_cast<std::size_t>(m_received[1] << 8) + m_received[2];
        frame = {Step::data, kDataHeaderSize + length};
        break;
    }
    case kEndCommand:
        frame = {Step::end, kEndSize};
        break;
    default:
        if (!addressedFrame(frame)) {
            return false;
        }
        break;
    }
    return m_received.size() >= frame.size;
}

bool TerminalModel::addressedFrame(Frame& frame) {
    if ((m_received[0] & kAddressNibble) != kAddressNibble) {
        discardAll("no frame begins with it");
        return false;
    }
    if (m_received.size() < 2) {
        return false;
    }
    if (m_received[1] == kInitCommand) {
        frame = {Step::init, kInitSize};
        return true;
    }
    if (m_received[1] != kRequestCommand) {
        discardAll("the second byte is no command");
        return false;
    }
    if (m_received.size() < kRequestHeaderSize) {
        return false;
    }
    frame = {Step::request, kRequestHeaderSize + m_received[kSizeCountOffset] +
                                m_received[kConceptLengthOffset] + kCrcSize};
    return true;
}

void TerminalModel::discardAll(const std::string& reason) {
    const std::size_t shown = std::min<std::size_t>(m_received.size(), 16);
    m_journal.trace("discarded " + std::to_string(m_received.size()) + " bytes that begin with " +
                    hexadecimal(m_received.data(), shown) + ": " + reason);
    m_received.clear();
}

Bytes TerminalModel::refuse(const std::string& reason, Bytes answer) {
    m_journal.trace("refused: " + reason);
    return answer;
}

Bytes TerminalModel::answerTo(const Frame& frame, bool refuse) {
    switch (frame.step) {
    case Step::init:
        return answerInit(frame);
    case Step::request:
        return answerRequest(frame);
    case Step::data:
        return answerData(frame, refuse);
    case Step::end:
        return answerEnd();
    }
    return {};
}

Bytes TerminalModel::answerInit(const Frame& frame) {
    if (m_state == State::loading) {
        m_journal.trace(padName() + ": the load is broken off by a new initialisation frame");
    }
    m_store.drop();
    m_state = State::asleep;
    const Bytes body(m_received.begin() + 1,
                     m_received.begin() + static_cast<std::ptrdiff_t>(frame.size));
    if (body != kInitBody) {
        return refuse(
            mismatch("initialisation frame: bytes after the address are", body, kInitBody), {});
    }
    m_pad = m_received[0] >> 4;
    m_state = State::awake;
    m_journal.trace(padName() + ": woken");
    Bytes answer = {static_cast<std::uint8_t>(kReplyBase + m_pad)};
    answer.insert(answer.end(), kInitAnswerBody.begin(), kInitAnswerBody.end());
    return answer;
}

Bytes TerminalModel::answerRequest(const Frame& frame) {
    const auto reply = static_cast<std::uint8_t>(kReplyBase + (m_received[0] >> 4));
    const std::string fault = faultOfRequest(frame);
    if (!fault.empty()) {
        return refuse("request frame: " + fault, withCrc({reply, 0x40, 0x02, 0x00, 0x01}));
    }
    const std::size_t sizeEnd = kRequestHeaderSize + m_received[kSizeCountOffset];
    m_announced = 0;
    for (std::size_t i = kRequestHeaderSize; i < sizeEnd; ++i) {
        m_announced = (m_announced << 8) + m_received[i];
    }
    m_stored = 0;
    m_block = 0;
    m_state = State::loading;
    if (!m_store.begin(m_pad)) {
        return refuse("request frame: cannot write " + m_store.fileOf(m_pad),
                      withCrc({reply, 0x40, 0x02, 0x00, 0x02}));
    }
    m_journal.trace(padName() + ": a load of " + std::to_string(m_announced) +
                    " bytes is announced" + conceptText(sizeEnd, frame.size - kCrcSize));
    m_journal.dataPhaseBegins();
    return withCrc({reply, 0x40, 0x02, 0x00, 0x00});
}

/// What is wrong with a request frame; empty when nothing is.
std::string TerminalModel::faultOfRequest(const Frame& frame) const {
    const std::size_t checked = frame.size - kCrcSize;
    const std::uint16_t crc = crcOf(m_received, checked);
    const std::size_t got = static_cast<std::size_t>(m_received[checked]) +
                            (static_cast<std::size_t>(m_received[checked + 1]) << 8);
    if (got != crc) {
        return mismatch(
            "CRC is", {m_received[checked], m_received[checked + 1]},
            {static_cast<std::uint8_t>(crc & 0xFF), static_cast<std::uint8_t>(crc >> 8)});
    }
    if (m_state == State::asleep) {
        return "the terminal was not woken";
    }
    if (m_received[0] >> 4 != m_pad) {
        return "it is for PAD " + std::to_string(m_received[0] >> 4) + ", but " + padName() +
               " was woken";
    }
    const auto length = static_cast<std::uint8_t>((checked - 3) & 0xFF);
    if (m_received[kRequestLengthOffset] != length) {
        return mismatch("length byte is", {m_received[kRequestLengthOffset]}, {length});
    }
    const Bytes constants(m_received.begin() + kRequestConstantsOffset,
                          m_received.begin() + kConceptLengthOffset);
    if (constants != kRequestConstants || m_received[kSizeTagOffset] != kSizeTag) {
        return mismatch("bytes 3 to 6 are", constants, kRequestConstants);
    }
    const std::size_t sizeCount = m_received[kSizeCountOffset];
    if (sizeCount > kLargestSizeCount) {
        return std::to_string(sizeCount) + " size bytes are more than 4";
    }
    if (sizeCount > 0 && m_received[kRequestHeaderSize] == 0) {
        return "the first size byte is 0";
    }
    return faultOfConcepts(kRequestHeaderSize + sizeCount, checked);
}

std::string TerminalModel::faultOfConcepts(std::size_t begin, std::size_t end) const {
    for (std::size_t i = begin; i < end;) {
        if (m_received[i] < kFirstConceptTag || m_received[i] > kLastConceptTag) {
            return "no concept begins with " + hexadecimal({m_received[i]});
        }
        if (i + 2 > end || i + 2 + m_received[i + 1] > end) {
            return "the last concept goes beyond the concept block";
        }
        i += 2U + m_received[i + 1];
    }
    return {};
}

std::string TerminalModel::conceptText(std::size_t begin, std::size_t end) const {
    std::string text;
    for (std::size_t i = begin; i < end;) {
        const std::size_t length = m_received[i + 1];
        const auto value = m_received.begin() + static_cast<std::ptrdiff_t>(i + 2);
        text += ", concept " + std::to_string(m_received[i] - kSizeTag) + " = \"" +
                std::string(value, value + static_cast<std::ptrdiff_t>(length)) + "\"";
        i += 2 + length;
    }
    return text;
}

Bytes TerminalModel::answerData(const Frame& frame, bool refusedByFault) {
    const std::size_t length = frame.size - kDataHeaderSize;
    ++m_block;
    const std::string name = "block " + std::to_string(m_block);
    if (m_state != State::loading) {
        return refuse(name + ": no load is under way", blockRefused(kNoLoadUnderWay));
    }
    if (length == 0 || length > kLargestBlock) {
        return refuse(name + ": " + std::to_string(length) + " bytes are not 1 to 30720",
                      blockRefused(kWrongLength));
    }
    if (m_stored + length > m_announced) {
        return refuse(name + ": " + std::to_string(m_stored + length) +
                          " bytes are more than the " + std::to_string(m_announced) + " announced",
                      blockRefused(kMoreThanAnnounced));
    }
    if (refusedByFault) {
        return refuse(name + ": a fault was asked for", kBlockAccepted);
    }
    if (!m_store.append(m_received.data() + kDataHeaderSize, length)) {
        return refuse(name + ": cannot write " + m_store.fileOf(m_pad), blockRefused(kCannotStore));
    }
    m_stored += length;
    m_journal.trace(padName() + ": " + name + ", " + std::to_string(m_stored) + " of " +
                    std::to_string(m_announced) + " bytes");
    return kBlockAccepted;
}

Bytes TerminalModel::answerEnd() {
    m_journal.dataPhaseEnds(m_block, m_stored);
    if (m_received[1] != 0 || m_received[2] != 0) {
        return refuse("ending frame: " + hexadecimal(m_received.data(), kEndSize) +
                          ", expected 02 00 00",
                      kLoadRefused);
    }
    if (m_state != State::loading) {
        return refuse("ending frame: no load is under way", kLoadRefused);
    }
    m_state = State::asleep;
    if (m_stored != m_announced) {
        m_store.drop();
        return refuse("ending frame: " + std::to_string(m_stored) + " bytes came, " +
                          std::to_string(m_announced) + " were announced",
                      kLoadRefused);
    }
    if (!m_store.finish()) {
        return refuse("ending frame: cannot write " + m_store.fileOf(m_pad), kLoadRefused);
    }
    m_journal.trace(padName() + ": complete, " + std::to_string(m_stored) + " bytes stored in " +
                    m_store.fileOf(m_pad));
    return kLoadAccepted;
}

std::vector<Action> TerminalModel::actionsFor(const Fault* fault, Bytes answer) {
    Action action;
    if (fault != nullptr) {
        m_journal.trace("a fault was asked for at this frame");
        applyFault(*fault, answer);
        action.pullsCable = fault->kind == FaultKind::pull;
        action.delay = fault->kind == FaultKind::late ? fault->time : action.delay;
    }
    if (action.pullsCable || answer.empty()) {
        return action.pullsCable ? std::vector<Action>{action} : std::vector<Action>{};
    }
    const std::size_t first =
        fault != nullptr && fault->kind == FaultKind::split ? 1 : answer.size();
    action.bytes.assign(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(first));
    std::vector<Action> actions = {action};
    m_journal.answerToHost(action.bytes);
    if (fault != nullptr && first < answer.size()) {
        const Bytes rest(answer.begin() + static_cast<std::ptrdiff_t>(first), answer.end());
        m_journal.answerToHost(rest);
        actions.push_back({fault->time, rest, false});
    }
    return actions;
}

} // namespace simulator

#include "simulator/simulated_reader.h"

#include <algorithm>
#include <csignal>
#include <thread>
#include <unistd.h>

namespace simulator {

namespace {

constexpr std::uint8_t kPrefix = 0x11;
const Bytes kNoCommand = {kPrefix, 0x0D};

// What the reader puts before the answer of the terminal.
const Bytes kAnswerHead = {0x91, 0x00};

} // namespace

ExchangeLog::ExchangeLog(const std::string& file, const std::string& timeFile)
    : m_file(create(file)), m_times(create(timeFile)) {
}

ExchangeLog::File ExchangeLog::create(const std::string& name) {
    return File(name.empty() ? nullptr : std::fopen(name.c_str(), "w"));
}

void ExchangeLog::sent(const std::string& reader, std::uint32_t code, std::size_t capacity,
                       const Bytes& bytes) {
    m_begin = std::chrono::steady_clock::now();
    if (m_file) {
        (void)std::fprintf(m_file.get(), "> %s %08X capacity %zu size %zu %s\n", reader.c_str(),
                           code, capacity, bytes.size(), hexadecimal(bytes).c_str());
        (void)std::fflush(m_file.get());
    }
}

void ExchangeLog::answered(const Bytes& bytes, bool failed) {
    if (m_times) {
        using Seconds = std::chrono::duration<double>;
        const Seconds begin = m_begin.time_since_epoch();
        const Seconds end = std::chrono::steady_clock::now().time_since_epoch();
        (void)std::fprintf(m_times.get(), "%.9f %.9f\n", begin.count(), end.count());
        (void)std::fflush(m_times.get());
    }
    if (m_file) {
        (void)std::fprintf(m_file.get(), "< %s%s\n", failed ? "failed " : "",
                           hexadecimal(bytes).c_str());
        (void)std::fflush(m_file.get());
    }
}

SimulatedReader::SimulatedReader(std::string name, const ReaderDescription& description,
                                 const std::string& storeFolder, Journal& journal, ExchangeLog& log)
    : m_name(std::move(name)), m_description(description),
      m_terminal(m_name, storeFolder + "/" + m_name, description.faults, journal), m_log(log) {
}

SimulatedReader::Result SimulatedReader::exchange(std::uint32_t code, const Bytes& sent,
                                                  std::size_t capacity, Bytes& answer) {
    m_log.sent(m_name, code, capacity, sent);
    const Result result = answerTo(code, sent, capacity, answer);
    if (m_description.bytesPerSecond != 0) {
        std::this_thread::sleep_for(
            std::chrono::duration<double>(static_cast<double>(sent.size() + answer.size()) /
                                          static_cast<double>(m_description.bytesPerSecond)));
    }
    m_log.answered(answer, result != Result::done);
    return result;
}

SimulatedReader::Result SimulatedReader::answerTo(std::uint32_t code, const Bytes& sent,
                                                  std::size_t capacity, Bytes& answer) {
    if (m_gone) {
        return Result::gone;
    }
    if (code != m_description.escapeCode) {
        return Result::refused;
    }
    ++m_exchanges;
    Result result = Result::done;
    const auto fault = std::find_if(
        m_description.escapeFaults.begin(), m_description.escapeFaults.end(),
        [this](const EscapeFault& candidate) { return candidate.exchange == m_exchanges; });
    if (fault != m_description.escapeFaults.end()) {
        result = showFault(*fault, answer);
    } else {
        result = askTerminal(sent, answer);
    }
    return result == Result::done && answer.size() > capacity ? Result::tooLong : result;
}

SimulatedReader::Result SimulatedReader::showFault(const EscapeFault& fault, Bytes& answer) {
    switch (fault.kind) {
    case EscapeFault::Kind::fail:
        return Result::refused;
    case EscapeFault::Kind::bytes:
        answer = fault.bytes;
        return Result::done;
    case EscapeFault::Kind::killDaemon:
        m_terminal.lineDown();
        (void)kill(getpid(), SIGKILL);
        return Result::refused;
    case EscapeFault::Kind::remove:
        m_terminal.lineDown();
        m_gone = true;
        break;
    }
    return Result::gone;
}

SimulatedReader::Result SimulatedReader::askTerminal(const Bytes& sent, Bytes& answer) {
    if (sent.size() < 2 || sent[0] != kPrefix) {
        return Result::refused;
    }
    answer = kAnswerHead;
    if (sent == kNoCommand) {
        return Result::done;
    }
    // The reader waits for all that the terminal has to say.
    for (const Action& action : m_terminal.receive(sent.data() + 1, sent.size() - 1)) {
        std::this_thread::sleep_for(action.delay);
        if (action.pullsCable) {
            m_terminal.lineDown();
            m_gone = true;
            answer.clear();
            return Result::gone;
        }
        answer.insert(answer.end(), action.bytes.begin(), action.bytes.end());
    }
    return Result::done;
}

} // namespace simulator

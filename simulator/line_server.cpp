#include "simulator/line_server.h"

#include <algorithm>
#include <climits>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace simulator {

namespace {

constexpr std::size_t kReadSize = 65536;
constexpr std::size_t kPacedReadSize = 4096;

bool writeAll(int line, const Bytes& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = write(line, bytes.data() + done, bytes.size() - done);
        if (written <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(written);
    }
    return true;
}

} // namespace

LineServer::LineServer(const Options& options, UsbTestbed& testbed, Journal& journal)
    : m_testbed(testbed), m_journal(journal), m_bytesPerSecond(options.bytesPerSecond) {
    for (std::size_t i = 0; i < testbed.count(); ++i) {
        Terminal terminal;
        terminal.model = std::make_unique<TerminalModel>(
            options.storeFolder + "/ttyACM" + std::to_string(i), options.faults, journal);
        m_terminals.push_back(std::move(terminal));
    }
}

void LineServer::serveUntil(int endSignal) {
    for (;;) {
        const Clock::time_point now = Clock::now();
        std::vector<pollfd> watched = {{endSignal, POLLIN, 0}};
        for (std::size_t i = 0; i < m_terminals.size(); ++i) {
            doPending(i, now);
            const bool mayRead = m_terminals[i].readable <= now;
            watched.push_back({mayRead ? m_testbed.line(i) : -1, POLLIN, 0});
        }
        if (poll(watched.data(), watched.size(), millisecondsToNextEvent(now)) < 0) {
            continue; // interrupted
        }
        for (std::size_t i = 0; i < m_terminals.size(); ++i) {
            if ((watched[i + 1].revents & POLLIN) != 0) {
                readFrom(i, Clock::now());
            }
        }
        if ((watched[0].revents & POLLIN) != 0) {
            return;
        }
    }
}

void LineServer::readFrom(std::size_t device, Clock::time_point now) {
    Terminal& terminal = m_terminals[device];
    std::uint8_t bytes[kReadSize];
    const ssize_t size =
        read(m_testbed.line(device), bytes, m_bytesPerSecond == 0 ? sizeof bytes : kPacedReadSize);
    if (size <= 0) {
        return;
    }
    m_journal.firstByte();
    if (m_bytesPerSecond != 0) {
        const std::chrono::duration<double> taken(static_cast<double>(size) /
                                                  static_cast<double>(m_bytesPerSecond));
        terminal.readable = std::max(terminal.readable, now - std::chrono::milliseconds(5)) +
                            std::chrono::duration_cast<Clock::duration>(taken);
    }
    for (Action& action : terminal.model->receive(bytes, static_cast<std::size_t>(size))) {
        if (terminal.pending.empty()) {
            terminal.due = now + action.delay;
        }
        terminal.pending.push_back(std::move(action));
    }
    doPending(device, now);
}

void LineServer::doPending(std::size_t device, Clock::time_point now) {
    Terminal& terminal = m_terminals[device];
    while (!terminal.pending.empty() && terminal.due <= now) {
        const Action action = terminal.pending.front();
        terminal.pending.pop_front();
        if (action.pullsCable) {
            m_journal.trace("the cable of ttyACM" + std::to_string(device) + " is pulled");
            terminal.model->lineDown();
            m_testbed.pull(device);
            terminal.pending.clear();
        } else if (m_testbed.line(device) >= 0 && !writeAll(m_testbed.line(device), action.bytes)) {
            m_journal.trace("the answer could not be written");
        }
        if (!terminal.pending.empty()) {
            terminal.due = now + terminal.pending.front().delay;
        }
    }
}

int LineServer::millisecondsToNextEvent(Clock::time_point now) const {
    Clock::time_point next = Clock::time_point::max();
    for (const Terminal& terminal : m_terminals) {
        if (!terminal.pending.empty()) {
            next = std::min(next, terminal.due);
        }
        if (terminal.readable > now) {
            next = std::min(next, terminal.readable);
        }
    }
    if (next == Clock::time_point::max()) {
        return -1;
    }
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(next - now).count();
    return static_cast<int>(std::clamp<long long>(rest, 0, INT_MAX));
}

} // namespace simulator

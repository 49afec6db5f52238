#include "simulator/line_server.h"

#include <algorithm>
#include <climits>
#include <string>
#include <unistd.h>

namespace simulator {

namespace {

constexpr std::size_t kReadSize = 65536;
constexpr std::size_t kPacedReadSize = 4096;
constexpr std::chrono::milliseconds kPacingSlack(5); // what the scheduler may be late by

// Places in the list of what is watched; the lines follow.
constexpr std::size_t kEndSignal = 0;
constexpr std::size_t kUseChanges = 1;
constexpr std::size_t kFirstLine = 2;

} // namespace

LineServer::LineServer(const Options& options, UsbTestbed& testbed, Journal& journal)
    : m_testbed(testbed), m_journal(journal), m_bytesPerSecond(options.bytesPerSecond) {
    for (std::size_t i = 0; i < testbed.count(); ++i) {
        m_terminals.emplace_back("ttyACM" + std::to_string(i), options, journal);
    }
}

void LineServer::serveUntil(int endSignal) {
    for (;;) {
        const Clock::time_point now = Clock::now();
        for (std::size_t i = 0; i < m_terminals.size(); ++i) {
            doPending(i, now);
        }
        std::vector<pollfd> events = watched(endSignal, now);
        if (poll(events.data(), events.size(), millisecondsToNextEvent(now)) < 0) {
            continue; // interrupted
        }
        for (std::size_t i = 0; i < m_terminals.size(); ++i) {
            if ((events[kFirstLine + i].revents & POLLIN) != 0) {
                readFrom(i, Clock::now());
            }
        }
        if (events[kUseChanges].revents != 0) {
            for (const std::size_t device : m_testbed.takeAbandoned()) {
                hangUp(device);
            }
        }
        if (events[kEndSignal].revents != 0) {
            return;
        }
    }
}

std::vector<pollfd> LineServer::watched(int endSignal, Clock::time_point now) const {
    std::vector<pollfd> list = {{endSignal, POLLIN, 0}, {m_testbed.useChanges(), POLLIN, 0}};
    for (std::size_t i = 0; i < m_terminals.size(); ++i) {
        const short reading = m_terminals[i].readable <= now ? POLLIN : 0;
        const short writing = m_terminals[i].unsent.empty() ? 0 : POLLOUT;
        list.push_back({m_testbed.line(i), static_cast<short>(reading | writing), 0});
    }
    return list;
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
        terminal.readable = std::max(terminal.readable, now - kPacingSlack) +
                            std::chrono::duration_cast<Clock::duration>(taken);
    }
    for (Action& action : terminal.model.receive(bytes, static_cast<std::size_t>(size))) {
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
            m_journal.trace("ttyACM" + std::to_string(device) + " the cable is pulled");
            m_testbed.pull(device);
            hangUp(device);
            return;
        }
        terminal.unsent.insert(terminal.unsent.end(), action.bytes.begin(), action.bytes.end());
        if (!terminal.pending.empty()) {
            terminal.due = now + terminal.pending.front().delay;
        }
    }
    sendUnsent(device);
}

void LineServer::sendUnsent(std::size_t device) {
    Bytes& unsent = m_terminals[device].unsent;
    while (!unsent.empty()) {
        const ssize_t written = write(m_testbed.line(device), unsent.data(), unsent.size());
        if (written <= 0) {
            return; // The host has not read what came before.
        }
        unsent.erase(unsent.begin(), unsent.begin() + written);
    }
}

/// The terminal sees the line go down, as when the host closes its port.
void LineServer::hangUp(std::size_t device) {
    Terminal& terminal = m_terminals[device];
    terminal.model.lineDown();
    terminal.pending.clear();
    terminal.unsent.clear();
    m_testbed.flush(device);
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

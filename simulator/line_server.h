// Lets terminal models answer on their lines, until the command that uses them has ended.
#pragma once

#include "simulator/journal.h"
#include "simulator/options.h"
#include "simulator/terminal_model.h"
#include "simulator/usb_testbed.h"

#include <chrono>
#include <deque>
#include <poll.h>
#include <vector>

namespace simulator {

class LineServer {
public:
    /// \param testbed with its devices plugged in; outlives the server, as does the journal
    LineServer(const Options& options, UsbTestbed& testbed, Journal& journal);

    /// Serves all lines.
    /// \param endSignal a descriptor that becomes readable when it is time to stop
    void serveUntil(int endSignal);

private:
    using Clock = std::chrono::steady_clock;

    struct Terminal {
        Terminal(const std::string& name, const Options& options, Journal& journal)
            : model(name, options.storeFolder + "/" + name, options.faults, journal) {}

        TerminalModel model;
        std::deque<Action> pending; ///< what it is still to do, in order
        Clock::time_point due;      ///< when the first of these is to be done
        Clock::time_point readable; ///< before this the link's rate forbids reading
        Bytes unsent;               ///< what the line has not taken yet
    };

    std::vector<pollfd> watched(int endSignal, Clock::time_point now) const;
    void readFrom(std::size_t device, Clock::time_point now);
    void doPending(std::size_t device, Clock::time_point now);
    void sendUnsent(std::size_t device);
    void hangUp(std::size_t device);
    int millisecondsToNextEvent(Clock::time_point now) const;

    UsbTestbed& m_testbed;
    Journal& m_journal;
    unsigned long m_bytesPerSecond;
    std::deque<Terminal> m_terminals;
};

} // namespace simulator

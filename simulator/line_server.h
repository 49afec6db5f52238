// Lets terminal models answer on their lines, until the command that uses them has ended.
#pragma once

#include "simulator/journal.h"
#include "simulator/options.h"
#include "simulator/terminal_model.h"
#include "simulator/usb_testbed.h"

#include <chrono>
#include <deque>
#include <memory>
#include <vector>

namespace simulator {

class LineServer {
public:
    LineServer(const Options& options, UsbTestbed& testbed, Journal& journal);

    /// Serves all lines.
    /// \param endSignal a descriptor that becomes readable when it is time to stop
    void serveUntil(int endSignal);

private:
    using Clock = std::chrono::steady_clock;

    struct Terminal {
        std::unique_ptr<TerminalModel> model;
        std::deque<Action> pending; ///< what it is still to do, in order
        Clock::time_point due;      ///< when the first of these is to be done
        Clock::time_point readable; ///< before this the link's rate forbids reading
    };

    void doPending(std::size_t device, Clock::time_point now);
    void readFrom(std::size_t device, Clock::time_point now);
    int millisecondsToNextEvent(Clock::time_point now) const;

    UsbTestbed& m_testbed;
    Journal& m_journal;
    unsigned long m_bytesPerSecond;
    std::vector<Terminal> m_terminals;
};

} // namespace simulator

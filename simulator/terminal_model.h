// A handheld terminal as its firmware would be: bytes in, bytes out, strict about every one.
//
// It knows no clock, no port and no file descriptor; whoever shows it to a host carries its answers
// out. It shares no code with the product, so that the two cannot share a mistake.
#pragma once

#include "simulator/fault.h"
#include "simulator/journal.h"
#include "simulator/pad_store.h"

#include <chrono>
#include <string>
#include <vector>

namespace simulator {

/// Something that the terminal does on its line, after what it did before.
struct Action {
    std::chrono::milliseconds delay{0}; ///< to wait first
    Bytes bytes;                        ///< to send then
    bool pullsCable = false;            ///< to vanish from the bus instead
};

class TerminalModel {
public:
    /// \param name    how the trace calls this terminal
    /// \param journal outlives the terminal
    TerminalModel(std::string name, std::string storeFolder, std::vector<Fault> faults,
                  Journal& journal);

    /// Takes bytes from the host, in any fragments.
    /// \return what the terminal does because of them, in order
    std::vector<Action> receive(const std::uint8_t* bytes, std::size_t size);

    /// The line went down: an unfinished frame and an unfinished load are dropped.
    void lineDown();

private:
    enum class State { asleep, awake, loading };

    /// The frame that the received bytes begin with.
    struct Frame {
        Step step;
        std::size_t size;
        std::string
            objection; ///< why it is refused before all of it has come; empty when it is not
    };

    bool findFrame(Frame& frame);
    bool findDataFrame(Frame& frame) const;
    bool findAddressedFrame(Frame& frame);
    void takeReceived(std::size_t size);
    void discardAll(const std::string& reason);
    std::vector<Action> takeFrame(const Frame& frame);
    Bytes answerTo(const Frame& frame, const Bytes& bytes, bool refusedByFault);
    static Bytes acceptanceOf(Step step, int pad);
    Bytes answerInit(const Bytes& bytes, bool refusedByFault);
    Bytes answerRequest(const Frame& frame, const Bytes& bytes, bool refusedByFault);
    Bytes answerData(const Frame& frame, const Bytes& bytes, bool refusedByFault);
    Bytes answerEnd(const Bytes& bytes, bool refusedByFault);
    std::string objectionOfState(const Bytes& request) const;
    Bytes refuse(const std::string& reason, Bytes answer);
    std::vector<Action> actionsFor(const std::vector<Fault>& faults, Bytes answer);
    void trace(const std::string& line);
    std::string padName() const;

    std::string m_name;
    PadStore m_store;
    std::vector<Fault> m_faults;
    Journal& m_journal;
    Bytes m_received;
    std::size_t m_toSkip = 0; ///< bytes to come of a frame that was refused by its header
    State m_state = State::asleep;
    int m_pad = 0;
    std::size_t m_announced = 0;
    std::size_t m_stored = 0;
    std::size_t m_block = 0;
};

} // namespace simulator

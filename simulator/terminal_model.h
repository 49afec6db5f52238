// A handheld terminal as its firmware would be: bytes in, bytes out, strict about every one.
//
// It knows no clock, no port and no file descriptor; whoever shows it to a host carries its answers
// out. It shares no code with the product, so that the two cannot share a mistake.
#pragma once

#include "simulator/fault.h"
#include "simulator/journal.h"
#include "simulator/pad_store.h"

#include <cstddef>
#include <cstdint>
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
    /// \param journal outlives the terminal
    TerminalModel(std::string storeFolder, std::vector<Fault> faults, Journal& journal);

    /// Takes bytes from the host, in any fragments.
    /// \return what the terminal does because of them, in order
    std::vector<Action> receive(const std::uint8_t* bytes, std::size_t size);

    /// The line went down: an unfinished load is dropped.
    void lineDown();

private:
    enum class State { asleep, awake, loading };

    /// What the host sent first, or nothing as long as more must come to know it.
    struct Frame {
        Step step;
        std::size_t size;
    };

    bool nextFrame(Frame& frame);
    bool addressedFrame(Frame& frame);
    void discardAll(const std::string& reason);
    Bytes answerTo(const Frame& frame, bool refuse);
    Bytes answerInit(const Frame& frame);
    Bytes answerRequest(const Frame& frame);
    Bytes answerData(const Frame& frame, bool refuse);
    Bytes answerEnd();
    std::string faultOfRequest(const Frame& frame) const;
    std::string faultOfConcepts(std::size_t begin, std::size_t end) const;
    std::string conceptText(std::size_t begin, std::size_t end) const;
    Bytes refuse(const std::string& reason, Bytes answer);
    std::vector<Action> actionsFor(const Fault* fault, Bytes answer);
    std::string padName() const;

    PadStore m_store;
    std::vector<Fault> m_faults;
    Journal& m_journal;
    Bytes m_received;
    State m_state = State::asleep;
    int m_pad = 0;
    std::size_t m_announced = 0;
    std::size_t m_stored = 0;
    std::size_t m_block = 0;
};

} // namespace simulator

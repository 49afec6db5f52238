// Faults that the simulated terminal shows on demand.
#pragma once

#include "simulator/bytes.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// The frames of a load at which a fault can be placed.
enum class Step { init, request, data, end };

enum class FaultKind {
    silence, ///< no answer at all
    wrong,   ///< a byte of the answer differs
    cut,     ///< only the first bytes of the answer
    longer,  ///< further bytes behind the answer
    split,   ///< the answer in two parts
    late,    ///< the answer after a time
    replace, ///< other bytes in the place of the answer
    pull,    ///< the cable is pulled in the place of the answer
};

/// One fault: what goes wrong at which frame.
struct Fault {
    Step step = Step::init;
    std::size_t block = 1; ///< for data: the block, counted from 1
    FaultKind kind = FaultKind::silence;
    std::size_t count = 0;             ///< bytes left or added
    std::chrono::milliseconds time{0}; ///< lateness or pause
    Bytes bytes;                       ///< the other answer
    std::string text;                  ///< as it was asked for

    /// True when the terminal, showing this fault, does not do what the frame asks for.
    /// \param acceptance the answer by which it would accept the frame
    bool refuses(const Bytes& acceptance) const;
};

/// Reads a fault as the command line gives it, STEP[:BLOCK]:KIND[=VALUE], see kFaultHelp.
/// \return nothing, with the reason in `error`, when it is not understood
std::optional<Fault> parseFault(const std::string& text, std::string& error);

/// Those of these faults that belong to a frame, in their order.
std::vector<Fault> faultsOf(const std::vector<Fault>& faults, Step step, std::size_t block);

/// How faults are written, for a help text.
extern const char* const kFaultHelp;

} // namespace simulator

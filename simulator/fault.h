// Faults that the simulated terminal shows on demand.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

using Bytes = std::vector<std::uint8_t>;

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

    /// True for the faults by which the terminal refuses what it was sent.
    bool refuses() const;
};

/// Reads a fault as the command line gives it, STEP[:BLOCK]:KIND[=VALUE], see kFaultHelp.
/// \return nothing, with the reason in `error`, when it is not understood
std::optional<Fault> parseFault(const std::string& text, std::string& error);

/// The first of these faults that belongs to a frame, null when there is none.
const Fault* findFault(const std::vector<Fault>& faults, Step step, std::size_t block);

/// How faults are written, for a help text.
extern const char* const kFaultHelp;

/// Reads hexadecimal digits, two a byte, blanks between bytes allowed.
std::optional<Bytes> parseBytes(const std::string& text);

/// Reads a decimal number that fills the whole text.
std::optional<unsigned long> parseNumber(const std::string& text);

} // namespace simulator

// The request frame as the terminal reads it. Pure functions of bytes.
#pragma once

#include "simulator/bytes.h"

#include <cstdint>
#include <string>

namespace simulator {

constexpr std::size_t kRequestHeaderSize = 10;
constexpr std::size_t kLargestSizeCount = 4;

/// Bytes with their CRC-16/KERMIT behind them, low byte first.
Bytes withCrc(Bytes bytes);

/// How long a request frame is in all, and how many size bytes it says it has.
/// \param header at least kRequestHeaderSize bytes
std::size_t requestFrameSize(const std::uint8_t* header);
std::size_t sizeCount(const std::uint8_t* header);

/// What is wrong with a complete request frame, apart from its address; empty when nothing is.
std::string objectionToRequest(const Bytes& frame);

/// The file size that a faultless request announces.
std::size_t announcedSize(const Bytes& frame);

/// The concepts of a faultless request as people read them: ", concept 1 = "alpha"" and so on.
std::string conceptText(const Bytes& frame);

} // namespace simulator

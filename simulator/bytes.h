// Bytes, and how people write them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

using Bytes = std::vector<std::uint8_t>;

/// Bytes as two uppercase digits each, with blanks between them.
std::string hexadecimal(const std::uint8_t* bytes, std::size_t size);
std::string hexadecimal(const Bytes& bytes);

/// Reads hexadecimal digits, two a byte, blanks between bytes allowed.
std::optional<Bytes> parseBytes(const std::string& text);

/// Reads a decimal number that fills the whole text.
std::optional<unsigned long> parseNumber(const std::string& text);

} // namespace simulator

#include "simulator/bytes.h"

#include <algorithm>
#include <charconv>

namespace simulator {

std::string hexadecimal(const std::uint8_t* bytes, std::size_t size) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(size * 3);
    for (std::size_t i = 0; i < size; ++i) {
        if (i > 0) {
            text.push_back(' ');
        }
        text.push_back(kDigits[bytes[i] >> 4U]);
        text.push_back(kDigits[bytes[i] & 0x0FU]);
    }
    return text;
}

std::string hexadecimal(const Bytes& bytes) {
    return hexadecimal(bytes.data(), bytes.size());
}

std::optional<Bytes> parseBytes(const std::string& text) {
    constexpr int kHexadecimal = 16;
    std::string digits = text;
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        unsigned int value = 0;
        const char* end = digits.data() + i + 2;
        if (std::from_chars(digits.data() + i, end, value, kHexadecimal).ptr != end) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
    return digits.size() % 2 == 0 ? std::optional<Bytes>(bytes) : std::nullopt;
}

std::optional<unsigned long> parseNumber(const std::string& text) {
    unsigned long value = 0;
    const char* end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, value);
    return parsed.ec == std::errc() && parsed.ptr == end ? std::optional<unsigned long>(value)
                                                         : std::nullopt;
}

} // namespace simulator

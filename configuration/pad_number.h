// The PAD number as users write it.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <limits>

/// The decimal number that a text begins with, as atoi reads it: "3x" is 3, "abc" is 0. Unlike
/// atoi's, the result of a number that does not fit is defined: the nearest one that does.
inline int leadingNumber(const char* text) {
    constexpr int kDecimal = 10;
    const long number = std::strtol(text, nullptr, kDecimal);
    return static_cast<int>(
        std::clamp<long>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

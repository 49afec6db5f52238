// What differs between the systems in their PC/SC interfaces.
#pragma once

#include <cstddef>

/// Bytes of an answer that are to be added to the capacity which PC/SC is given, because the caller
/// of the port does not count them.
extern const std::size_t kUncountedAnswerBytes;

#include "devices/pcsc_platform.h"

// pcsc-lite refuses an answer longer than the capacity, and the terminal's carries two bytes more
// than the caller wants.
const std::size_t kUncountedAnswerBytes = 2;

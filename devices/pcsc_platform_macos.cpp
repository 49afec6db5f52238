#include "devices/pcsc_platform.h"

// The capacity is what the caller wants and no more: so the readers are driven on this system.
const std::size_t kUncountedAnswerBytes = 0;

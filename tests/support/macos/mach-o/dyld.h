// The call of the dynamic linker that the product uses, declared as on macOS.
#pragma once

#include <cstdint>

/// Copies the path of the executable, terminated. Returns -1, with the size that is needed in
/// bufsize and the buffer as it was, when it does not fit.
extern "C" int _NSGetExecutablePath(char* buf, std::uint32_t* bufsize);

#include "app/run_mode.h"

#include <cstdarg>
#include <cstdio>

bool g_inCmdMode = false;

void printOutcome(const char* fmt, ...) {
    std::va_list arguments;
    va_start(arguments, fmt);
    (void)std::vprintf(fmt, arguments);
    va_end(arguments);
    (void)std::fflush(stdout);
}

#include "app/run_mode.h"

#include <cstdarg>
#include <cstdio>

bool g_inCmdMode = false;

namespace {

void print(const char* fmt, std::va_list arguments) {
    (void)std::vprintf(fmt, arguments);
    (void)std::fflush(stdout);
}

} // namespace

void printInCmdMode(const char* fmt, ...) {
    if (g_inCmdMode) {
        std::va_list arguments;
        va_start(arguments, fmt);
        print(fmt, arguments);
        va_end(arguments);
    }
}

void printOutcome(const char* fmt, ...) {
    std::va_list arguments;
    va_start(arguments, fmt);
    print(fmt, arguments);
    va_end(arguments);
}

// Which of the two modes runs, and the one way to print an outcome on the console.
#pragma once

/// True while the command line runs, false in window mode. Set once by main, before any thread
/// is started.
extern bool g_inCmdMode;

/// Prints as printOutcome does while the command line runs; does nothing in window mode, where the
/// window is told instead.
void printInCmdMode(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

/// Prints on standard output and flushes it, so that progress is seen when it happens, also
/// through a pipe. Any thread; a closed or full output is ignored, the load matters more.
void printOutcome(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

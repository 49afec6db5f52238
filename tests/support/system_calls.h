// Watches, and lets fail, the calls by which the serial port meets the system. They stand before
// the C library's in the link order and pass everything on.
#pragma once

#include <sys/time.h>
#include <vector>

namespace system_calls {

/// What select was asked to wait for.
extern std::vector<timeval> selectTimeouts;
/// The sizes that write was asked for.
extern std::vector<std::size_t> writeSizes;
/// What open and tcsetattr were asked for last; -1 as long as neither was.
extern int openFlags;
extern int tcsetattrActions;
/// Modem lines set by TIOCMSET, -1 as long as none were.
extern int modemLines;
/// Errors for the next calls; 0 lets them through.
extern int nextTcsetattrError;
extern int nextSelectError;
extern int nextReadError;
/// The next wait ends with an exceptional condition and nothing else.
extern bool nextSelectIsExceptional;
/// The next so many writes take nothing and return 0.
extern int emptyWrites;

/// Forgets and allows everything.
void reset();

} // namespace system_calls

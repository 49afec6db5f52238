#include "tests/support/system_calls.h"

#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace system_calls {

std::vector<timeval> selectTimeouts;
std::vector<std::size_t> writeSizes;
int openFlags = -1;
int tcsetattrActions = -1;
int modemLines = -1;
int nextTcsetattrError = 0;
int nextSelectError = 0;
int nextReadError = 0;
bool nextSelectIsExceptional = false;
int emptyWrites = 0;

void reset() {
    selectTimeouts.clear();
    writeSizes.clear();
    openFlags = tcsetattrActions = modemLines = -1;
    nextSelectIsExceptional = false;
    nextTcsetattrError = nextSelectError = nextReadError = emptyWrites = 0;
}

namespace {

template<typename Function> Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// \return true when the call is to fail; errno is then set
bool fails(int& error) {
    const int wanted = std::exchange(error, 0);
    if (wanted != 0) {
        errno = wanted;
    }
    return wanted != 0;
}

} // namespace
} // namespace system_calls

using namespace system_calls;

extern "C" {

int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const int mode = (flags & O_CREAT) == 0 ? 0 : va_arg(arguments, int);
    va_end(arguments);
    openFlags = flags;
    return next<int(const char*, int, ...)>("open")(path, flags, mode);
}

int tcsetattr(int fd, int actions, const termios* settings) {
    tcsetattrActions = actions;
    return fails(nextTcsetattrError)
               ? -1
               : next<decltype(tcsetattr)>("tcsetattr")(fd, actions, settings);
}

int select(int count, fd_set* readSet, fd_set* writeSet, fd_set* exceptSet, timeval* timeout) {
    if (timeout != nullptr) {
        selectTimeouts.push_back(*timeout);
    }
    if (std::exchange(nextSelectIsExceptional, false)) {
        FD_ZERO(readSet);
        return 1;
    }
    return fails(nextSelectError)
               ? -1
               : next<decltype(select)>("select")(count, readSet, writeSet, exceptSet, timeout);
}

ssize_t read(int fd, void* bytes, size_t size) {
    return fails(nextReadError) ? -1 : next<decltype(read)>("read")(fd, bytes, size);
}

ssize_t write(int fd, const void* bytes, size_t size) {
    if (isatty(fd) != 0) {
        writeSizes.push_back(size);
    }
    if (emptyWrites > 0) {
        --emptyWrites;
        return 0;
    }
    return next<decltype(write)>("write")(fd, bytes, size);
}

int ioctl(int fd, unsigned long request, ...) {
    std::va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request == TIOCMGET) {
        *static_cast<int*>(argument) = TIOCM_CTS;
        return 0;
    }
    if (request == TIOCMSET) {
        modemLines = *static_cast<int*>(argument);
        return 0;
    }
    return next<int(int, unsigned long, ...)>("ioctl")(fd, request, argument);
}

} // extern "C"

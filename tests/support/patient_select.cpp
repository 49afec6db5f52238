// Preloaded into the program under test: waits as long as it takes, whatever select is asked for,
// and writes down what it was asked for in microseconds, into the file "waits".

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/select.h>
#include <unistd.h>

#include <cstdio>

extern "C" int select(int count, fd_set* readSet, fd_set* writeSet, fd_set* exceptSet,
                      timeval* timeout) {
    using Select = int(int, fd_set*, fd_set*, fd_set*, timeval*);
    auto* next = reinterpret_cast<Select*>(dlsym(RTLD_NEXT, "select"));
    if (timeout != nullptr) {
        char line[64];
        const long wait = timeout->tv_sec * 1000000L + timeout->tv_usec;
        const int length = std::snprintf(line, sizeof line, "%ld\n", wait);
        const int file = open("waits", O_WRONLY | O_CREAT | O_APPEND, 0666);
        if (file >= 0) {
            if (write(file, line, static_cast<size_t>(length)) < 0) {
                _exit(99);
            }
            close(file);
        }
    }
    return next(count, readSet, writeSet, exceptSet, nullptr);
}

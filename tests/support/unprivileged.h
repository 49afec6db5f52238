// Runs a piece of a test as an ordinary user, for whom the rights of files count.
#pragma once

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

/// The user and group "nobody".
constexpr unsigned int kNobody = 65534;

/// \return what the piece returned, in a child process of an ordinary user; false when it died
inline bool asOrdinaryUser(const std::function<bool()>& piece) {
    const pid_t child = fork();
    if (child == 0) {
        const bool dropped = geteuid() != 0 || (setgid(kNobody) == 0 && setuid(kNobody) == 0);
        _exit(dropped && piece() ? 0 : 1);
    }
    int status = 1;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

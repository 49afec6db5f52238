#include "simulator/child_process.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace simulator {

namespace {

constexpr int kCannotRun = 127; // as a shell says it
constexpr int kSignalBase = 128;

} // namespace

pid_t startCommand(const std::vector<std::string>& command, const char* output) {
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    (void)sigemptyset(&none);
    (void)sigprocmask(SIG_SETMASK, &none, nullptr);
    const int file =
        output == nullptr ? -1 : open(output, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file >= 0) {
        (void)dup2(file, STDOUT_FILENO);
        (void)dup2(file, STDERR_FILENO);
    }
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    (void)execvp(words[0], words.data());
    (void)std::fprintf(stderr, "vexa-reader: cannot run %s: %s\n", words[0], std::strerror(errno));
    _exit(kCannotRun);
}

int statusOf(pid_t child) {
    int status = 0;
    pid_t ended = -1;
    do {
        ended = wait(&status);
    } while (ended != child && (ended > 0 || errno == EINTR));
    if (ended != child) {
        return kCannotRun;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalBase + WTERMSIG(status);
}

void endChild(pid_t child) {
    constexpr timespec kPatience = {2, 0};
    sigset_t childEnds;
    (void)sigemptyset(&childEnds);
    (void)sigaddset(&childEnds, SIGCHLD);
    (void)sigprocmask(SIG_BLOCK, &childEnds, nullptr);
    if (child <= 0 || waitpid(child, nullptr, WNOHANG) != 0) {
        return;
    }
    (void)kill(child, SIGTERM);
    while (waitpid(child, nullptr, WNOHANG) == 0) {
        if (sigtimedwait(&childEnds, nullptr, &kPatience) < 0) {
            (void)kill(child, SIGKILL);
            (void)waitpid(child, nullptr, 0);
            return;
        }
    }
}

} // namespace simulator

// vexa-terminal: runs a command on a system into which simulated terminals are plugged.

#include "simulator/line_server.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace simulator;

constexpr int kUsageStatus = 64;     // EX_USAGE of sysexits.h
constexpr int kNoTestbedStatus = 69; // EX_UNAVAILABLE
constexpr int kCannotRun = 127;      // as a shell says it
constexpr int kSignalBase = 128;

/// Does not return.
void runInChild(const std::vector<std::string>& command, const sigset_t& signals) {
    UsbTestbed::enterInChild();
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
    (void)sigprocmask(SIG_SETMASK, &signals, nullptr);
    (void)std::signal(SIGPIPE, SIG_DFL); // the testbed ignores it
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    (void)execvp(words[0], words.data());
    (void)std::fprintf(stderr, "vexa-terminal: cannot run %s: %s\n", words[0],
                       std::strerror(errno));
    _exit(kCannotRun);
}

int fail(int status, const std::string& message) {
    (void)std::fprintf(stderr, "vexa-terminal: %s\n", message.c_str());
    return status;
}

/// The signals by which we hear that the command, or our own time, has come to an end. Blocked
/// before the testbed starts its threads: one that has them open would swallow them.
/// \param before set to what was blocked until now
Descriptor watchEndSignals(sigset_t& before) {
    sigset_t ending;
    (void)sigemptyset(&ending);
    for (const int signal : {SIGCHLD, SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
        (void)sigaddset(&ending, signal);
    }
    struct sigaction onlyEnds {};
    onlyEnds.sa_handler = SIG_DFL;
    onlyEnds.sa_flags = SA_NOCLDSTOP; // a command that is stopped goes on some time
    (void)sigaction(SIGCHLD, &onlyEnds, nullptr);
    (void)sigprocmask(SIG_BLOCK, &ending, &before);
    return Descriptor(signalfd(-1, &ending, SFD_CLOEXEC));
}

/// Waits for the command; one that is still there is asked to end, and then made to.
int endOf(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, WNOHANG) == 0) {
        constexpr timespec kPatience = {2, 0};
        sigset_t childEnds;
        (void)sigemptyset(&childEnds);
        (void)sigaddset(&childEnds, SIGCHLD);
        (void)kill(child, SIGTERM);
        (void)kill(child, SIGCONT);
        (void)sigtimedwait(&childEnds, nullptr, &kPatience);
        (void)kill(child, SIGKILL);
        (void)waitpid(child, &status, 0);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalBase + WTERMSIG(status);
}

int run(const Options& options) {
    sigset_t before;
    const Descriptor endSignal = watchEndSignals(before);
    std::string error;
    Journal journal;
    UsbTestbed testbed;
    if (!journal.open(options.traceFile, options.frameFile, options.timeFile, error) ||
        !testbed.plugIn(options.devices, options.furtherDevices, error)) {
        return fail(kNoTestbedStatus, error);
    }
    LineServer server(options, testbed, journal);
    const pid_t child = fork();
    if (child == 0) {
        runInChild(options.command, before);
    }
    if (child < 0 || endSignal.get() < 0) {
        return fail(kNoTestbedStatus, std::strerror(errno));
    }
    server.serveUntil(endSignal.get());
    return endOf(child);
}

} // namespace

int main(int argc, char* argv[]) {
    std::string error;
    const std::optional<Options> options = parseOptions({argv + 1, argv + argc}, error);
    if (!options) {
        return fail(kUsageStatus, error + "; --help says more");
    }
    if (options->help) {
        (void)std::fputs(helpText().c_str(), stdout);
        return 0;
    }
    return run(*options);
}

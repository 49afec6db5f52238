// vexa-reader: runs a command on a system with a PC/SC daemon and simulated readers of its own.

#include "simulator/child_process.h"
#include "simulator/pcsc_daemon.h"
#include "simulator/private_system.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace simulator;

constexpr int kUsageStatus = 64;    // EX_USAGE of sysexits.h
constexpr int kNoSystemStatus = 69; // EX_UNAVAILABLE

int fail(int status, const std::string& message) {
    (void)std::fprintf(stderr, "vexa-reader: %s\n", message.c_str());
    return status;
}

/// Runs as the first process of the private system; all others end with it.
int runInside(const std::vector<std::string>& words, const ReaderOptions& options,
              const std::string& driver, const PrivateSystem& system) {
    std::string error;
    (void)unsetenv("PCSCLITE_CSOCK_NAME"); // would lead the command to another daemon
    PcscDaemon daemon(driver);
    if (!system.enter(kSystemDrivers, error) ||
        (options.daemon && !daemon.start(words, options, error)) ||
        !holdReaders(options.readers, error)) {
        return fail(kNoSystemStatus, error);
    }
    return statusOf(startCommand(options.command));
}

/// The driver runs in another folder, so it is told where the files lie from the root on.
std::vector<std::string> withAbsolutePaths(std::vector<std::string> words) {
    const auto end = std::find(words.begin(), words.end(), "--");
    if (std::find(words.begin(), end, "--store") == end) {
        words.insert(words.begin(), {"--store", ReaderOptions().storeFolder});
    }
    const std::vector<std::string> fileOptions = {"--store",     "--trace", "--frames",
                                                  "--exchanges", "--times", "--daemon-log"};
    for (std::size_t i = 0; i + 1 < words.size() && words[i] != "--"; ++i) {
        for (const std::string& option : fileOptions) {
            if (words[i] == option && !words[i + 1].empty()) {
                words[i + 1] = std::filesystem::absolute(words[i + 1]);
            }
        }
    }
    return words;
}

/// \return the first of the files to write that cannot be written; empty when all can
std::string unwritableFile(const ReaderOptions& options) {
    for (const std::string& file : {options.traceFile, options.frameFile, options.exchangeFile,
                                    options.timeFile, options.daemonLog}) {
        if (!file.empty() && !std::ofstream(file, std::ios::app)) {
            return file;
        }
    }
    return {};
}

} // namespace

int main(int argc, char* argv[]) {
    const std::vector<std::string> words =
        withAbsolutePaths(std::vector<std::string>(argv + 1, argv + argc));
    std::string error;
    const std::optional<ReaderOptions> options = parseReaderOptions(words, error);
    if (!options) {
        return fail(kUsageStatus, error + "; --help says more");
    }
    if (options->help) {
        (void)std::fputs(readerHelpText().c_str(), stdout);
        return 0;
    }
    const std::string unwritable = unwritableFile(*options);
    if (!unwritable.empty()) {
        return fail(kNoSystemStatus, "cannot write " + unwritable);
    }
    const std::string driver = driverFile(argv[0]);
    PrivateSystem system;
    const pid_t inside = system.fork(error);
    if (inside == 0) {
        return runInside(words, *options, driver, system);
    }
    return inside < 0 ? fail(kNoSystemStatus, error) : statusOf(inside);
}

// The benchmark: each figure is a ratio of two things measured side by side in one run, so that it
// says the same on a fast and on a slow machine.
//
// bench FOLDER REPETITIONS [NUMBER]...
//   FOLDER holds the databases that scripts/bench makes, and takes what the runs write. With
//   numbers, only these lines of the table are measured.

#include "tests/bench/measure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

using Words = std::vector<std::string>;

constexpr int kTerminalProcessor = 0;
constexpr int kHostProcessor = 1;
constexpr double kMiB = 1048576;

std::string folder;
int repetitions = 5;
Words chosenLines; ///< empty: all

[[noreturn]] void fail(const std::string& what) {
    std::cerr << "bench: " << what << " failed\n";
    std::exit(1);
}

/// What one load took.
struct Load {
    Measured host;
    double firstByte = 0; ///< seconds from the start to the first byte on the wire
    double dataPhase = 0; ///< seconds from the accepted request to the ending frame
};

double numberAfter(const std::string& text, const std::string& words, std::size_t column) {
    const std::size_t line = text.find(words);
    if (line == std::string::npos) {
        fail("a load");
    }
    std::size_t at = text.rfind('\n', line) + 1;
    for (; column > 0; --column) {
        at = text.find(' ', at) + 1;
    }
    return std::strtod(text.c_str() + at, nullptr);
}

std::string contentOf(const std::string& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Runs a program on the system that the simulated terminal is plugged into.
Measured runOnTestbed(const Words& program, const std::string& times) {
    const std::string measured = folder + "/measured";
    Words command = {VEXA_TERMINAL, "--store", folder + "/store",
                     "--times",     times,     "--",
                     VEXA_MEASURE,  measured,  std::to_string(kHostProcessor)};
    command.insert(command.end(), program.begin(), program.end());
    if (runMeasured(command, kTerminalProcessor).status != 0) {
        fail(program[0]);
    }
    Measured result;
    std::ifstream(measured) >> result.start >> result.wall >> result.processor >> result.peakMemory;
    return result;
}

/// Loads the terminal by a host program.
Load load(const Words& host) {
    const std::string times = folder + "/times";
    Load result;
    result.host = runOnTestbed(host, times);
    const std::string text = contentOf(times);
    // "first byte at N seconds", "N blocks N bytes N seconds"
    result.firstByte = numberAfter(text, "first byte", 3) - result.host.start;
    result.dataPhase = numberAfter(text, " blocks ", 4);
    return result;
}

std::string database(const std::string& name) {
    return folder + "/" + name + ".db";
}

Words charger(const std::string& name, const std::string& executable = VEXA_EXECUTABLE) {
    return {executable, database(name), "/dev/ttyACM0", "2"};
}

Words bareLoop(const std::string& name) {
    return {VEXA_BARE_LOOP, database(name), "/dev/ttyACM0"};
}

double integrityCheck(const std::string& name) {
    const Measured taken =
        runMeasured({"sqlite3", database(name), "PRAGMA integrity_check"}, kHostProcessor);
    if (taken.status != 0) {
        fail("sqlite3");
    }
    return taken.wall;
}

/// Processor seconds that sz needs to send a file to rz over a pseudo-terminal.
double sendByZmodem(const std::string& name) {
    int receiverEnd = -1;
    int senderEnd = -1;
    termios raw{};
    cfmakeraw(&raw);
    if (openpty(&receiverEnd, &senderEnd, nullptr, &raw, nullptr) != 0) {
        fail("openpty");
    }
    const pid_t receiver = fork();
    if (receiver == 0) {
        // rz stores into the current folder.
        if (chdir((folder + "/store").c_str()) != 0) {
            _exit(1);
        }
        _exit(runMeasured({"rz", "-b", "-y"}, kTerminalProcessor, receiverEnd, receiverEnd).status);
    }
    constexpr unsigned int kHeadStart = 300000; // microseconds, so that it does not miss the call
    (void)usleep(kHeadStart);
    const Measured sender =
        runMeasured({"sz", "-b", "-8", "--start-8k", "-w", "30720", database(name)}, kHostProcessor,
                    senderEnd, senderEnd);
    int status = 0;
    (void)waitpid(receiver, &status, 0);
    (void)close(receiverEnd);
    (void)close(senderEnd);
    if (sender.status != 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        fail("sz to rz");
    }
    return sender.processor;
}

/// What a program with a window took, where so many terminals are plugged in.
/// \return the numbers that it wrote, in seconds
std::vector<double> windowTimes(const char* terminals, Words command) {
    const std::string measured = folder + "/measured";
    command.insert(command.begin() + 1, {measured, std::to_string(kHostProcessor)});
    Words whole = {VEXA_TERMINAL, "--store", folder + "/store", "--devices", terminals, "--"};
    whole.insert(whole.end(), command.begin(), command.end());
    if (runMeasured(whole, kTerminalProcessor).status != 0) {
        fail(command[0]);
    }
    std::ifstream file(measured);
    return {std::istream_iterator<double>(file), std::istream_iterator<double>()};
}

double windowShown(const std::string& program) {
    return windowTimes("20", {VEXA_WINDOW_PROBE, program}).at(0);
}

/// Seconds that the load from the window took, and for which its event loop stood still at most.
std::vector<double> windowLoad() {
    return windowTimes("1", {VEXA_WINDOW_LOAD, database("64MiB")});
}

std::string windowProgram() {
    return folder + "/window/VEXACharger";
}

struct Pair {
    double ours;
    double theirs;
};

/// Seconds from the first to the last of a load's four escape exchanges, by the program and by the
/// yardstick, through the same daemon; a load by the yardstick goes before, to warm it up.
Pair loadThroughReader(const Words& readerOptions) {
    const std::string times = folder + "/reader-times";
    const std::string onProcessor =
        VEXA_MEASURE " " + folder + "/measured " + std::to_string(kHostProcessor) + " ";
    const std::string bare =
        onProcessor + VEXA_BARE_ESCAPES " " + database("reader") + " 'Halvorin Terminal 00 00'";
    const std::string ours = onProcessor + VEXA_EXECUTABLE " " + database("reader") + " PCSC 2";
    Words command = {VEXA_READER, "--store", folder + "/store", "--times", times};
    command.insert(command.end(), readerOptions.begin(), readerOptions.end());
    const Words program = {"--", "sh", "-c", bare + " && " + ours + " && " + bare};
    command.insert(command.end(), program.begin(), program.end());
    if (runMeasured(command, kTerminalProcessor).status != 0) {
        fail("a load through a reader");
    }
    constexpr int kLoads = 3;
    constexpr int kExchanges = 4;
    std::ifstream stream(times);
    double taken[kLoads] = {};
    for (double& load : taken) {
        for (int i = 0; i < kExchanges; ++i) {
            double begin = 0;
            double end = 0;
            stream >> begin >> end;
            load += i == 0 ? -begin : 0;
            load += i == kExchanges - 1 ? end : 0;
        }
    }
    return {taken[1], taken[2]};
}

/// Measures pairs and prints a line of the table.
/// \param difference the figure is ours less theirs, not ours divided by theirs
void report(const char* what, const char* unit, double limit, bool difference,
            const std::function<Pair()>& measure) {
    const std::string number(what, std::strcspn(what, " "));
    if (!chosenLines.empty() &&
        std::find(chosenLines.begin(), chosenLines.end(), number) == chosenLines.end()) {
        return;
    }
    (void)measure(); // to fill the caches
    std::vector<double> ours;
    std::vector<double> theirs;
    std::vector<double> figures;
    for (int i = 0; i < repetitions; ++i) {
        const Pair pair = measure();
        ours.push_back(pair.ours);
        theirs.push_back(pair.theirs);
        figures.push_back(difference ? pair.ours - pair.theirs : pair.ours / pair.theirs);
    }
    for (std::vector<double>* values : {&ours, &theirs, &figures}) {
        std::sort(values->begin(), values->end());
    }
    const std::size_t middle = figures.size() / 2;
    (void)std::printf("%-58s %9.3f %9.3f %-4s %8.3f  %7.3f to %7.3f  %6.2f  %s\n", what,
                      ours[middle], theirs[middle], unit, figures[middle], figures.front(),
                      figures.back(), limit, figures[middle] <= limit ? "met" : "MISSED");
    (void)std::fflush(stdout);
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc < 3) {
        std::cerr << "usage: bench FOLDER REPETITIONS [NUMBER]...\n";
        return 64;
    }
    folder = argv[1];
    repetitions = std::max(1, std::atoi(argv[2]));
    chosenLines.assign(argv + 3, argv + argc);
    const double size = static_cast<double>(
        std::ifstream(database("64MiB"), std::ios::ate | std::ios::binary).tellg());

    (void)std::printf("%d repetitions; ours, yardstick, ratio: medians; then the spread of the "
                      "ratio and its limit\n\n",
                      repetitions);
    report("1  data phase of 64 MiB / bare loop", "s", 1.03, false, [] {
        return Pair{load(charger("64MiB")).dataPhase, load(bareLoop("64MiB")).dataPhase};
    });
    report("2  load of 64 MiB / (integrity check + bare loop)", "s", 1.10, false, [] {
        return Pair{load(charger("64MiB")).host.wall,
                    integrityCheck("64MiB") + load(bareLoop("64MiB")).host.wall};
    });
    report("3  processor time for each MiB / sz", "ms", 0.33, false, [size] {
        return Pair{1e3 * load(charger("64MiB")).host.processor / (size / kMiB),
                    1e3 * sendByZmodem("64MiB") / (size / kMiB)};
    });
    report("4a peak memory, 1 GiB less 1 MiB (KiB)", "KiB", 1024, true, [] {
        return Pair{load(charger("1GiB")).host.peakMemory, load(charger("1MiB")).host.peakMemory};
    });
    report("4b peak memory, 100000 concepts less 10 (KiB)", "KiB", 1024, true, [] {
        return Pair{load(charger("100000-rows")).host.peakMemory,
                    load(charger("10-rows")).host.peakMemory};
    });
    report("5  load of 64 MiB, log on / log off", "s", 1.05, false, [] {
        return Pair{load(charger("64MiB", folder + "/logging/VEXACharger")).host.wall,
                    load(charger("64MiB")).host.wall};
    });
    report("6  start to the first byte / empty widgets program", "ms", 1.30, false, [] {
        return Pair{
            1e3 * load(charger("small")).firstByte,
            1e3 *
                runOnTestbed({VEXA_EMPTY_WIDGETS, "-platform", "minimal"}, folder + "/times").wall};
    });
    report("7a load of 30717 bytes through a reader / bare escapes", "ms", 1.10, false, [] {
        const Pair seconds = loadThroughReader({});
        return Pair{1e3 * seconds.ours, 1e3 * seconds.theirs};
    });
    report("7b the same, reader paced at 1.2 MB/s", "ms", 1.10, false, [] {
        const Pair seconds = loadThroughReader({"--rate", "1200000"});
        return Pair{1e3 * seconds.ours, 1e3 * seconds.theirs};
    });
    report("8  window shown, 20 terminals / empty window shown", "ms", 1.50, false, [] {
        return Pair{1e3 * windowShown(windowProgram()), 1e3 * windowShown(VEXA_EMPTY_WINDOW)};
    });
    report("9  load of 64 MiB, window / command line", "s", 1.10, false, [] {
        return Pair{windowLoad().at(0), load(charger("64MiB")).host.wall};
    });
    report("10 longest block of the event loop in such a load (ms)", "ms", 50, true, [] {
        return Pair{1e3 * windowLoad().at(1), 0};
    });
    return 0;
}

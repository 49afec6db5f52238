#include "tests/bench/measure.h"

#include <chrono>
#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double seconds(const timeval& time) {
    constexpr double kMicrosecond = 1e-6;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * kMicrosecond;
}

void stayOn(int processor) {
    if (processor >= 0) {
        cpu_set_t set;
        CPU_ZERO(&set);
        CPU_SET(processor, &set);
        (void)sched_setaffinity(0, sizeof set, &set);
    }
}

[[noreturn]] void exec(const std::vector<std::string>& command, int input, int output) {
    constexpr int kCannotRun = 127;
    const int nothing = open("/dev/null", O_RDWR);
    (void)dup2(input < 0 ? nothing : input, STDIN_FILENO);
    (void)dup2(output < 0 ? nothing : output, STDOUT_FILENO);
    (void)dup2(nothing, STDERR_FILENO);
    std::vector<char*> words;
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    (void)execvp(words[0], words.data());
    _exit(kCannotRun);
}

} // namespace

Measured runMeasured(const std::vector<std::string>& command, int processor, int input,
                     int output) {
    Measured result;
    result.start = now();
    const pid_t child = fork();
    if (child == 0) {
        stayOn(processor);
        exec(command, input, output);
    }
    int status = 0;
    rusage used{};
    if (child < 0 || wait4(child, &status, 0, &used) != child) {
        return result;
    }
    result.wall = now() - result.start;
    result.processor = seconds(used.ru_utime) + seconds(used.ru_stime);
    result.peakMemory = static_cast<double>(used.ru_maxrss);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

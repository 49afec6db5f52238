// measure FILE PROCESSOR COMMAND [ARGUMENT]...
//   Runs COMMAND on one processor and writes what it took into FILE: the start on the monotonic
//   clock, wall time and processor time in seconds, peak memory in KiB.

#include "tests/bench/measure.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char* argv[]) {
    if (argc < 4) {
        return 64;
    }
    const Measured taken = runMeasured({argv + 3, argv + argc}, std::atoi(argv[2]));
    std::FILE* file = std::fopen(argv[1], "w");
    if (file == nullptr) {
        return 73;
    }
    (void)std::fprintf(file, "%.6f %.6f %.6f %.0f\n", taken.start, taken.wall, taken.processor,
                       taken.peakMemory);
    return std::fclose(file) == 0 ? taken.status : 74;
}

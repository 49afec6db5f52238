// Runs a command and measures it.
#pragma once

#include <string>
#include <vector>

/// What a command took.
struct Measured {
    int status = -1;       ///< exit status, -1 when it was killed
    double start = 0;      ///< seconds on the monotonic clock
    double wall = 0;       ///< seconds
    double processor = 0;  ///< seconds, user and system
    double peakMemory = 0; ///< KiB, of the largest process
};

/// Runs a command to its end.
/// \param processor the processor to stay on, -1 for any; the terminal and its host have one each,
///                  so that the scheduler does not decide who wins
/// \param input, output descriptors for standard input and output, -1 for none
Measured runMeasured(const std::vector<std::string>& command, int processor = -1, int input = -1,
                     int output = -1);

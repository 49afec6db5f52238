// The arguments of the command line.
#pragma once

#include <string>
#include <vector>

/// Exit statuses of the command line's own checks; the others are LoadResult.
enum CommandLineResult : int {
    kDatabaseNotFound = 2, ///< the database file cannot be opened
    kWrongArguments = 11,  ///< wrong number of arguments, or a single one; also after the help
    kWrongPad = 12,        ///< PAD number not in 1 to 14
};

/// Checks the arguments, runs the load that they ask for and prints what comes of it.
/// \param arguments all of the process, the program's path first
/// \return the exit status
int analyzeArgs(std::vector<std::string> arguments);

/// Prints how the program is used.
void putInstructions();

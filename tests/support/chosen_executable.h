// Stands in for the system's answer to where the running executable lies.
#pragma once

#include <string>

/// The path that executablePath gives; empty lets it fail.
extern std::string chosenExecutable;

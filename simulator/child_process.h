// Starting and ending the processes of the simulated readers' system.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace simulator {

/// Starts a command; it ends with the calling process.
/// \param output a file for its output and error output; null leaves both as they are
/// \return its process, -1 when there is none
pid_t startCommand(const std::vector<std::string>& command, const char* output = nullptr);

/// Waits for a child, and collects all others that end meanwhile.
/// \return its exit status, as a shell gives it
int statusOf(pid_t child);

/// Asks a child to end, makes it after two seconds, and collects it.
void endChild(pid_t child);

} // namespace simulator

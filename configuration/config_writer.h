// Writing of VEXA_init.ini: the default file, and the recent folder within an existing one.
//
// Threads: the main thread only. Failure: a file that cannot be written stays as it is; nothing
// reaches the caller.
#pragma once

#include <string>

/// Writes the default file, which carries the French texts of the window.
/// \param path full path; a file there is replaced
void createConfigFile(char* path);

/// Gives every RecentPath line of the configuration file a new value. A file that cannot be opened
/// for reading ends up empty and is replaced by the default one at the next start; one that breaks
/// off in mid-reading stays as it is.
/// \param recentPath UTF-8
void writeConfig(std::string recentPath);

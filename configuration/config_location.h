// Where VEXA_init.ini lies, and the one way in which it is written.
//
// The file lies in `config/` beside the executable. An installed program cannot write there: then
// `config/` lies in the user's own settings folder, and a file beside the executable is where the
// user's copy starts from. Reader and writer ask here, so that they always mean the same file.
//
// Threads: the main thread only. Failure: logged, and seen as a missing file later on.
#pragma once

#include <QByteArray>

#include <cstddef>
#include <string>
#include <sys/types.h>

/// Rights of the folder `config/`, less what the mask takes away.
constexpr mode_t kConfigFolderMode = 0775;

/// The folder in which `config/` lies, absolute, without a final slash. The user's folder is made,
/// and its copy started, when they are needed and missing.
/// \param caller name under which a failure is logged
std::string configParentFolder(const char* caller);

/// Gives a file new content: wholly or not at all wherever the file can be replaced by another one
/// of the same owner, else by writing over it.
/// \return false when it could not be written
bool replaceFile(const std::string& path, const QByteArray& content);

/// Asks the system for the path of the running executable.
/// \param size room in the buffer, the terminator included
/// \return false, with the buffer empty, when the path is unknown or does not fit
bool executablePath(char* buffer, std::size_t size);

/// The place for this program's settings in a home folder, below it and without slashes around it.
extern const char* const kUserSettingsFolder;

// The database as a file, before SQLite is asked about it. Any thread.
#pragma once

#include <QString>

#include <string>

/// True when this is a file that can be opened for reading. A folder counts: SQLite finds out that
/// it is no database. A pipe or a device does not, it could keep the program waiting or has no
/// content of its own; nor does a name that is not UTF-8, which the toolkit cannot spell, so that
/// another file would be checked than the one that is meant.
/// \param path UTF-8
bool canBeRead(const std::string& path);

/// The absolute form of a path. Relative ones that begin with ":" or "file:" mean other things than
/// files to the toolkit and to SQLite.
QString absolutePath(const std::string& path);

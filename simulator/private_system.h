// A part of the system that nobody outside sees: mounts and processes of its own.
#pragma once

#include <string>

namespace simulator {

/// Takes the calling process out of the mounts, and its children out of the processes, of the
/// others; as an ordinary user by way of a user namespace. The next child is the first process of
/// the new system and must call enterPrivateSystem; all others end with it.
/// \return false, with the reason in `error`, when neither the right to nor user namespaces exist
bool leaveCommonSystem(std::string& error);

/// Called in the first child. /run is empty then and so is `hiddenFolder`, if it exists.
bool enterPrivateSystem(const char* hiddenFolder, std::string& error);

} // namespace simulator

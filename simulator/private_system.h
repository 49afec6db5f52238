// A part of the system that nobody outside sees: mounts and processes of its own.
#pragma once

#include <sys/types.h>

#include <string>

namespace simulator {

class PrivateSystem {
public:
    /// Forks; the child is the first process of the private system, and all others there end with
    /// it. For an ordinary user it is in a user namespace. The caller stays where it is.
    /// \return as fork; -1, with the reason in `error`, when neither the right to nor user
    ///         namespaces exist
    pid_t fork(std::string& error);

    /// Called in the child: it is root there, and /run and `hiddenFolder`, if it exists, are empty.
    bool enter(const char* hiddenFolder, std::string& error) const;

private:
    std::string m_user;
    std::string m_group;
    bool m_hasUserNamespace = false;
};

} // namespace simulator

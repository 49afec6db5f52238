// The program with its window.
#pragma once

#include <QString>

/// Shows the window, in the language of the locale where there is a translation, until it is
/// closed. A load that is still under way then is cancelled. The application object must exist.
/// Main thread. \param localeName for instance fr_FR \return the exit status; the program ends at
/// once, with that status, when a worker cannot be
///         stopped in time
int runWindow(const QString& localeName);

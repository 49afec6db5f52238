#include "configuration/config_location.h"

#include <unistd.h>

const char* const kUserSettingsFolder = ".config/VEXACharger";

bool executablePath(char* buffer, std::size_t size) {
    buffer[0] = '\0';
    const ssize_t length = readlink("/proc/self/exe", buffer, size);
    // A path that fills the buffer may have been cut.
    const bool complete = length >= 0 && static_cast<std::size_t>(length) < size;
    buffer[complete ? length : 0] = '\0';
    return complete;
}

#include "configuration/config_location.h"

#include <cstdint>
#include <mach-o/dyld.h>

const char* const kUserSettingsFolder = "Library/Application Support/VEXACharger";

bool executablePath(char* buffer, std::size_t size) {
    auto room = static_cast<std::uint32_t>(size);
    const bool complete = _NSGetExecutablePath(buffer, &room) == 0;
    if (!complete) {
        buffer[0] = '\0';
    }
    return complete;
}

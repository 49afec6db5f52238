#include "tests/support/chosen_executable.h"

#include "configuration/config_location.h"

#include <cstring>

std::string chosenExecutable;

const char* const kUserSettingsFolder = ".config/VEXACharger";

bool executablePath(char* buffer, std::size_t size) {
    const bool fits = !chosenExecutable.empty() && chosenExecutable.size() < size;
    std::strcpy(buffer, fits ? chosenExecutable.c_str() : "");
    return fits;
}

#include "app/display.h"

// The usual plugin needs the session of a logged-in person, which ssh does not bring.
const char* const kCommandLinePlatform = "minimal";

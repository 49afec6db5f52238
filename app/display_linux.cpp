#include "app/display.h"

// Without a display the usual plugin aborts the program.
const char* const kCommandLinePlatform = "minimal";

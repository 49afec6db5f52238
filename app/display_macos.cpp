#include "app/display.h"

// The usual plugin needs the session of a logged-in person, which ssh does not bring.
const char* const kCommandLinePlatform = "minimal";

// The window is laid out for this system's points, and its bundle asks for the light appearance.
void prepareDisplay() {
}

void adaptToDisplay() {
}

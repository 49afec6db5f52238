// What differs between the systems in how the application object meets the screen.
#pragma once

/// The platform plugin of the toolkit for the command line, which must work where there is no
/// display at all.
extern const char* const kCommandLinePlatform;

/// Prepares for a window; to be called before there is an application object.
void prepareDisplay();

/// Adapts the application object to the window; to be called before there are widgets.
void adaptToDisplay();

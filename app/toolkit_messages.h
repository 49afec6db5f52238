// What the toolkit itself has to say.
#pragma once

/// Sends the toolkit's warnings that operators can do nothing about, and need not, to the log
/// instead of the console, and ends the program in good order, with status 69, when the window has
/// no display. All others appear on standard error as usual. To be called once, by the main thread,
/// first of all; the messages may come from any thread.
void quietToolkit();

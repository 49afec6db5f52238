// Reading of VEXA_init.ini: UTF-8 text in which a line "&key=value" is a setting and any other
// line a comment.
//
// Threads: the main thread only, before either mode runs.
// Failure: never reaches the caller; a missing or invalid file is replaced by the default one.
#pragma once

#include "configuration/config.h"

/// Fills the record from the configuration file, which is created when it is missing and replaced
/// when it is not valid (in window mode after a message to the operator). Reading the LogPath line
/// opens the log. Text fields without a line keep their values.
void config_from_file(VEXAConfig* cfg);

/// True when the file can be opened and holds more than thirteen known settings, all lines of
/// ExplicativeText together counting as one.
bool checkConfigFile(char* path);

/// Applies one setting to the record.
/// \param line "&key=value" without its line end; an abbreviated key counts as the first one that
///             it begins
void parse_variable(char* line, VEXAConfig* cfg);

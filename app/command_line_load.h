// The one load of the command line.
#pragma once

#include <string>

/// Result when no terminal is on the named port. The others are LoadResult.
constexpr int kDeviceNotFound = 13;

/// Finds the terminal, loads the database on the calling thread and prints the course of it.
/// \param database path of the file, UTF-8
/// \param port     port name of the terminal, or "PCSC" for the first PC/SC reader
/// \param pad      PAD number as typed, already checked
/// \return the result of the load, or 13 when no terminal is on that port
int cmdExec(std::string database, std::string port, std::string pad);

// Stands in for both searches for terminals: what they find is the test's choice.
#pragma once

#include "devices/device.h"

#include <string>
#include <vector>

namespace listed_devices {

extern std::vector<VEXADevice> serial;
extern std::vector<VEXADevice> readers;

/// A serial terminal. \param name as it is shown
VEXADevice terminal(const std::string& name, const std::string& port);

/// A terminal behind a PC/SC reader.
VEXADevice reader(const std::string& name);

} // namespace listed_devices

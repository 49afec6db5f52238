// What the command line of the simulated terminal asks for.
#pragma once

#include "simulator/fault.h"

#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// One USB device; an identifier or name that is not given is an attribute that it lacks.
struct UsbDevice {
    std::optional<std::string> vendorId;
    std::optional<std::string> productId;
    std::optional<std::string> product;
};

struct Options {
    std::string storeFolder = "terminal-store";
    std::vector<UsbDevice> devices;
    std::vector<Fault> faults;
    unsigned long bytesPerSecond = 0; ///< 0: as fast as it goes
    std::string traceFile;
    std::string frameFile;
    std::string timeFile;
    std::string furtherDevices; ///< a file in umockdev's format
    std::vector<std::string> command;
    bool help = false;
};

/// \return nothing, with the reason in `error`, when the arguments are wrong
std::optional<Options> parseOptions(const std::vector<std::string>& arguments, std::string& error);

/// The help text.
std::string helpText();

} // namespace simulator

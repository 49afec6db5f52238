// What the command line of the simulated readers asks for.
#pragma once

#include "simulator/fault.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// Something that goes wrong at one escape exchange, between the reader and the host.
struct EscapeFault {
    enum class Kind {
        fail,       ///< the reader refuses
        bytes,      ///< these bytes are all that it answers
        remove,     ///< it goes away
        killDaemon, ///< the PC/SC daemon dies
    };

    unsigned long exchange = 1; ///< counted from 1
    Kind kind = Kind::fail;
    Bytes bytes;
};

/// One reader with the terminal behind it; an attribute that is not given is one that it lacks.
struct ReaderDescription {
    std::string name;
    std::optional<std::string> vendor;
    std::optional<std::string> serial;
    std::optional<Bytes> features; ///< as they are answered; none: the question is refused
    std::uint32_t escapeCode = 0;  ///< the one control code that is taken for an escape
    unsigned long slotCount = 1;
    unsigned long bytesPerSecond = 0; ///< 0: as fast as it goes
    bool held = false;                ///< another program holds it for itself
    std::vector<Fault> faults;
    std::vector<EscapeFault> escapeFaults;
};

struct ReaderOptions {
    std::string storeFolder = "terminal-store";
    std::string traceFile;
    std::string frameFile;
    std::string exchangeFile;
    std::string timeFile;
    std::string daemonLog = "/dev/null";
    std::vector<ReaderDescription> readers;
    bool daemon = true;
    std::vector<std::string> command;
    bool help = false;
};

/// \return nothing, with the reason in `error`, when the arguments are wrong
std::optional<ReaderOptions> parseReaderOptions(const std::vector<std::string>& arguments,
                                                std::string& error);

/// The help text.
std::string readerHelpText();

} // namespace simulator

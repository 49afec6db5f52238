// The real PC/SC daemon, with simulated readers.
#pragma once

#include "simulator/reader_options.h"

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace simulator {

/// The folder in which the daemon looks for the drivers of the system's own readers.
extern const char* const kSystemDrivers;

/// The driver of the simulated readers. Asked for before a private system is entered: from there
/// our own executable has another path.
/// \param calledAs our first argument, for a system without /proc
std::string driverFile(const std::string& calledAs);

class PcscDaemon {
public:
    explicit PcscDaemon(std::string driver) : m_driver(std::move(driver)) {}
    /// Ends the daemon.
    ~PcscDaemon();
    PcscDaemon(const PcscDaemon&) = delete;
    PcscDaemon& operator=(const PcscDaemon&) = delete;

    /// Starts the daemon on the private /run and waits until it takes connections.
    /// \param words those that `options` were made of, for the driver
    /// \return false, with the reason in `error`, when it did not come up
    bool start(const std::vector<std::string>& words, const ReaderOptions& options,
               std::string& error);

private:
    bool writeConfig(const std::vector<std::string>& words, const ReaderOptions& options) const;

    std::string m_driver;
    pid_t m_process = -1;
};

/// Connects to those readers that are to be held, for as long as the calling process lives.
/// \return false, with the reason in `error`, when one could not be had
bool holdReaders(const std::vector<ReaderDescription>& readers, std::string& error);

} // namespace simulator

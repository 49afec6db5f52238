// A system of simulated USB serial devices, made of umockdev: a sysfs tree and device nodes for
// child processes, and the terminal's end of each line for us.
#pragma once

#include "simulator/options.h"

#include <cstddef>
#include <string>
#include <vector>

namespace simulator {

class UsbTestbed {
public:
    UsbTestbed();
    ~UsbTestbed();
    UsbTestbed(const UsbTestbed&) = delete;
    UsbTestbed& operator=(const UsbTestbed&) = delete;

    /// Plugs the devices in, as /dev/ttyACM0 and so on.
    /// \param further a file with further devices in umockdev's format, or empty
    bool plugIn(const std::vector<UsbDevice>& devices, const std::string& further,
                std::string& error);

    /// The terminal's end of a line, -1 once it is pulled.
    int line(std::size_t device) const { return m_lines[device].terminalEnd; }
    std::size_t count() const { return m_lines.size(); }

    /// Pulls the cable: the line goes down and the device leaves sysfs.
    void pull(std::size_t device);

    /// Has the calling process, a child, see the simulated system from its next exec on.
    static void enterInChild();

private:
    struct Line {
        int terminalEnd;
        int hostEnd; ///< held open, so that the line outlives the programs that use it
    };

    bool openLine(std::size_t device, std::string& error);

    void* m_testbed; ///< a UMockdevTestbed, whose header stays out of this one
    std::vector<Line> m_lines;
};

} // namespace simulator

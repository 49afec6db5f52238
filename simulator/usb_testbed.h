// A system of simulated USB serial devices, made of umockdev: a sysfs tree and device nodes for
// child processes, and the terminal's end of each line for us.
#pragma once

#include "simulator/descriptor.h"
#include "simulator/options.h"

#include <cstddef>
#include <memory>
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
    /// \return false, with the reason in `error`, when that cannot be done
    bool plugIn(const std::vector<UsbDevice>& devices, const std::string& further,
                std::string& error);

    std::size_t count() const { return m_lines.size(); }

    /// The terminal's end of a line, -1 once it is pulled. It does not block.
    int line(std::size_t device) const { return m_lines[device].terminalEnd; }

    /// A descriptor that is readable when programs have opened or closed the lines.
    int useChanges() const { return m_useWatch.get(); }

    /// Reads these changes. \return the devices whose last user has gone
    std::vector<std::size_t> takeAbandoned();

    /// Forgets what is under way on a line in both directions.
    void flush(std::size_t device);

    /// Pulls the cable: the line goes down and the device leaves sysfs.
    void pull(std::size_t device);

    /// Has the calling process, a child, see the simulated system from its next exec on.
    static void enterInChild();

private:
    struct Testbed;

    struct Line {
        int terminalEnd;    ///< the testbed's
        Descriptor hostEnd; ///< held open, so that the line outlives the programs that use it
        int watch;          ///< for opening and closing
        int users = 0;
    };

    bool openLine(std::size_t device, std::string& error);

    std::unique_ptr<Testbed> m_testbed;
    std::vector<Line> m_lines;
    Descriptor m_useWatch;
};

} // namespace simulator

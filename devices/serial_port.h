// The port of a terminal that shows up as a USB serial device.
#pragma once

#include "devices/device_port.h"

#include <string>

class VEXASerialPort : public VEXADevicePort {
public:
    /// Opens the device node and sets the line: raw, 9600 baud, 8N1, DTR and RTS raised. A failure
    /// is logged; every exchange then fails.
    explicit VEXASerialPort(std::string devicePath);

    /// Leaves the device node open, as closePort does.
    ~VEXASerialPort() override;

    /// Sets the line. \return true on success
    bool ConfigureCOMSession();

    /// Writes the whole command, waits for the answer to begin and reads once: what that one read
    /// brings is the answer.
    bool ExecuteCommand(unsigned char* in, int inLen, unsigned char* out, int* outLen,
                        int auxTimeout, int responseTimeoutMs) override;

    /// Waits for a descriptor to become readable.
    /// \param timeoutMs milliseconds
    /// \return a positive count when it is readable, 0 on time-out, -1 on error
    int WaitForIncomingData(int fd, unsigned long timeoutMs);

    /// Does not close the device node, which is intended: it stays open until the process ends,
    /// and a later port opens it again.
    bool closePort() override;

    int getResponseTimeout() override { return 3000; }
    int getAuxTimeout() override { return 200; }

private:
    bool setLine();
    bool writeAll(const unsigned char* in, int inLen);

    int handle = -1;
};

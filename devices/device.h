// One terminal that can be loaded: a value, copied freely.
#pragma once

#include <string>

/// The port name under which every PC/SC reader is listed.
extern const char* const kPcscPortName;

class VEXADevice {
public:
    /// A record of no device: all texts empty.
    VEXADevice() = default;

    /// \param path        serial: path of the service in the system's registry; PC/SC: reader name
    /// \param port        serial: path of the device node; PC/SC: "PCSC"
    /// \param productName serial: product name, of which the display name is derived; PC/SC: the
    ///                    display name as it stands
    /// \param vendorId    USB vendor ID, four uppercase hexadecimal digits; empty for PC/SC
    /// \param productId   USB product ID, likewise
    VEXADevice(std::string path, std::string port, std::string productName, std::string vendorId,
               std::string productId);
    VEXADevice(const VEXADevice&) = default;
    VEXADevice& operator=(const VEXADevice&) = default;
    virtual ~VEXADevice() = default;

    // Copies of what the constructor was given, or made of it.
    std::string getPortCOM() const;
    std::string getName() const;
    std::string getVID() const;
    std::string getPID() const;
    std::string getDevicePath() const;
    /// True for a terminal behind a PC/SC reader.
    bool isPCSC() const;

private:
    std::string devicePath;
    std::string PID;
    std::string VID;
    std::string portCOM;
    std::string name;
    bool pcsc = false;
};

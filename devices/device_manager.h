// The terminals that are connected now and supported.
//
// Owner: the manager owns its list; devices are handed out as copies.
// Threads: the main thread only. Failure: logged, and seen as a shorter list.
#pragma once

#include "devices/device.h"

#include <string>
#include <vector>

class VEXADeviceManager {
public:
    /// Starts with the serial terminals.
    VEXADeviceManager();
    VEXADeviceManager(const VEXADeviceManager&) = default;
    VEXADeviceManager& operator=(const VEXADeviceManager&) = default;
    virtual ~VEXADeviceManager() = default;

    /// Forgets all devices. A fresh enumeration is this, then findSerialDevices, then
    /// findAllPCSCDevices.
    void clearDeviceList();

    /// A copy of the list as it is now.
    std::vector<VEXADevice> getDeviceList();

    /// The first device with this display name, else a record of no device.
    VEXADevice getDevice(std::string name);

    /// Appends the serial terminals whose identifiers are configured as supported; with no vendor
    /// ID configured, all that have one. The order is that of the system's registry.
    void findSerialDevices();

    /// Appends the terminals behind PC/SC readers of the maker, in the order of the readers.
    void findAllPCSCDevices();

    /// Appends a record for every serial service of the system, supported or not.
    /// \return false when the system's registry could not be searched
    bool findDevices(std::vector<VEXADevice>& out);

    /// Reads the record of one serial service.
    /// \param service the system's handle of the service, which is released
    /// \param out     written on success only
    /// \return false when one of its properties is missing
    bool getDeviceInterfaceDetails(unsigned int service, VEXADevice& out);

    /// True when two identifiers are equal but for the case of their letters and for a carriage
    /// return at their ends, which a configuration file may leave there.
    bool compareVPID(std::string a, std::string b);

private:
    bool isSupported(const VEXADevice& device);

    std::vector<VEXADevice> deviceList;
};

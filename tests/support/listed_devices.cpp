#include "tests/support/listed_devices.h"

#include "app/log.h"
#include "devices/device_manager.h"

namespace listed_devices {

std::vector<VEXADevice> serial;
std::vector<VEXADevice> readers;

VEXADevice terminal(const std::string& name, const std::string& port) {
    return {"/sys/" + port, port, name + " - x", "F055", "0012"};
}

VEXADevice reader(const std::string& name) {
    return {name, "PCSC", name, "", ""};
}

} // namespace listed_devices

bool VEXADeviceManager::findDevices(std::vector<VEXADevice>& out) {
    out = listed_devices::serial;
    return true;
}

bool VEXADeviceManager::getDeviceInterfaceDetails(unsigned int /*service*/, VEXADevice& /*out*/) {
    return false;
}

void VEXADeviceManager::findAllPCSCDevices() {
    deviceList.insert(deviceList.end(), listed_devices::readers.begin(),
                      listed_devices::readers.end());
}

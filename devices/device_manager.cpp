#include "devices/device_manager.h"

#include "app/log.h"
#include "configuration/config.h"

namespace {

bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool sameCharacter(char a, char b) {
    constexpr int kCaseDistance = 'a' - 'A';
    const int distance = a - b;
    const bool caseDiffers = distance == kCaseDistance || distance == -kCaseDistance;
    return a == b || (isLetter(a) && isLetter(b) && caseDiffers);
}

void dropCarriageReturn(std::string& text) {
    if (!text.empty() && text.back() == '\r') {
        text.pop_back();
    }
}

} // namespace

VEXADeviceManager::VEXADeviceManager() {
    const FunctionTrace trace("VEXADeviceManager::VEXADeviceManager");
    deviceList.clear();
    findSerialDevices();
}

void VEXADeviceManager::clearDeviceList() {
    deviceList.clear();
}

std::vector<VEXADevice> VEXADeviceManager::getDeviceList() {
    const FunctionTrace trace("VEXADeviceManager::getDeviceList");
    return deviceList;
}

VEXADevice VEXADeviceManager::getDevice(std::string name) {
    const FunctionTrace trace("VEXADeviceManager::getDevice");
    for (const VEXADevice& device : deviceList) {
        if (device.getName() == name) {
            VEXALog(kLogInfo, "Device found");
            return device;
        }
    }
    VEXALog(kLogError, "Device not found");
    return {};
}

void VEXADeviceManager::findSerialDevices() {
    // Entry and exit carry the name findAllDevices; whoever reads the log looks for it.
    VEXALog(kLogEntry, "VEXADeviceManager::findAllDevices");
    std::vector<VEXADevice> found;
    const bool searched = findDevices(found);
    for (const VEXADevice& device : found) {
        if (isSupported(device)) {
            deviceList.push_back(device);
        }
    }
    VEXALog(kLogExit, "VEXADeviceManager::findAllDevices (%s)", searched ? "TRUE" : "FALSE");
}

bool VEXADeviceManager::isSupported(const VEXADevice& device) {
    if (g_configParams.VID.empty()) {
        return !device.getVID().empty();
    }
    for (std::size_t j = 0; j < supportedDeviceCount(g_configParams); ++j) {
        if (compareVPID(device.getVID(), g_configParams.VID[j]) &&
            compareVPID(device.getPID(), g_configParams.PID[j])) {
            return true;
        }
    }
    return false;
}

bool VEXADeviceManager::compareVPID(std::string a, std::string b) {
    const FunctionTrace trace("VEXADeviceManager::compareVPID");
    dropCarriageReturn(a);
    dropCarriageReturn(b);
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!sameCharacter(a[i], b[i])) {
            return false;
        }
    }
    return true;
}

#include "devices/device.h"

#include "app/log.h"

const char* const kPcscPortName = "PCSC";

namespace {

/// The model name: what stands before " -". A name without it loses its last character; operators
/// know their terminals by these names, so both cuts stay.
std::string modelName(const std::string& productName) {
    std::string model;
    for (std::size_t i = 0; i + 1 < productName.size(); ++i) {
        if (productName[i] == ' ' && productName[i + 1] == '-') {
            break;
        }
        model.push_back(productName[i]);
    }
    return model;
}

} // namespace

VEXADevice::VEXADevice(std::string path, std::string port, std::string productName,
                       std::string vendorId, std::string productId)
    : devicePath(path), PID(productId), VID(vendorId), portCOM(port),
      name(port == kPcscPortName ? productName : modelName(productName)),
      pcsc(port == kPcscPortName) {
    VEXALog(kLogInfo, "VEXADevice::VEXADevice");
}

std::string VEXADevice::getPortCOM() const {
    VEXALog(kLogInfo, "VEXADevice::getPortCOM");
    return portCOM;
}

std::string VEXADevice::getName() const {
    VEXALog(kLogInfo, "VEXADevice::getName");
    return name;
}

std::string VEXADevice::getVID() const {
    VEXALog(kLogInfo, "VEXADevice::getVID");
    return VID;
}

std::string VEXADevice::getPID() const {
    VEXALog(kLogInfo, "VEXADevice::getPID");
    return PID;
}

std::string VEXADevice::getDevicePath() const {
    VEXALog(kLogInfo, "VEXADevice::getDevicePath");
    return devicePath;
}

bool VEXADevice::isPCSC() const {
    VEXALog(kLogInfo, "VEXADevice::isPCSC");
    return pcsc;
}

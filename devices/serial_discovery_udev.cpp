// Enumeration of USB serial devices on Linux. All properties come from sysfs attributes, so that no
// udev daemon has to run. The log texts are those of the other systems: support staff search for
// them.

#include "app/log.h"
#include "devices/device_manager.h"

#include <libudev.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

struct UdevRelease {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_enumerate* search) const { udev_enumerate_unref(search); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
};
using UdevContext = std::unique_ptr<udev, UdevRelease>;
using UdevSearch = std::unique_ptr<udev_enumerate, UdevRelease>;
using UdevDevice = std::unique_ptr<udev_device, UdevRelease>;

/// The services that the latest search has found; a handle is an index. Reading a service takes it
/// out, so that each is opened once only. The context outlives them.
UdevContext context;
std::vector<UdevDevice> foundServices;

/// The USB device that a tty belongs to, null for any other tty. Owned by the tty.
udev_device* usbDeviceOf(udev_device* tty) {
    return udev_device_get_parent_with_subsystem_devtype(tty, "usb", "usb_device");
}

/// An identifier as four uppercase digits, nothing when the attribute is missing or no number.
std::optional<std::string> identifier(udev_device* usbDevice, const char* attribute) {
    const char* text = udev_device_get_sysattr_value(usbDevice, attribute);
    if (text == nullptr) {
        return std::nullopt;
    }
    constexpr int kHexadecimal = 16;
    unsigned int value = 0;
    const char* end = text + std::strlen(text);
    const auto parsed = std::from_chars(text, end, value, kHexadecimal);
    if (parsed.ec != std::errc() || parsed.ptr != end) {
        return std::nullopt;
    }
    char digits[2 * sizeof value + 1];
    (void)std::snprintf(digits, sizeof digits, "%04X", value);
    return std::string(digits);
}

/// Asks for the ttys but for the virtual consoles: there are 64 of them on every machine, and to
/// look at each takes longer than all the rest of the start.
bool lookForSerialPorts(udev_enumerate* search) {
    bool asked = udev_enumerate_add_match_subsystem(search, "tty") >= 0;
    for (const char* name : {"[!t]*", "t[!t]*", "tt[!y]*", "tty[!0-9]*"}) {
        asked = asked && udev_enumerate_add_match_sysname(search, name) >= 0;
    }
    return asked;
}

/// Fills foundServices with the ttys of USB devices. libudev lists them in the order of their sysfs
/// paths.
/// \return false when sysfs could not be searched
bool findServices() {
    foundServices.clear();
    context.reset(udev_new());
    const UdevSearch search(context ? udev_enumerate_new(context.get()) : nullptr);
    if (!search || !lookForSerialPorts(search.get())) {
        VEXALog(kLogInfo, "No AppleUSBCDC device found");
        return false;
    }
    if (udev_enumerate_scan_devices(search.get()) < 0) {
        VEXALog(kLogError, "findPort : IOServiceGetMatchingServices failed");
        return false;
    }
    for (udev_list_entry* entry = udev_enumerate_get_list_entry(search.get()); entry != nullptr;
         entry = udev_list_entry_get_next(entry)) {
        UdevDevice tty(
            udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
        if (tty && usbDeviceOf(tty.get()) != nullptr) {
            foundServices.push_back(std::move(tty));
        }
    }
    return true;
}

UdevDevice takeService(unsigned int service) {
    return service < foundServices.size() ? std::move(foundServices[service]) : nullptr;
}

} // namespace

bool VEXADeviceManager::findDevices(std::vector<VEXADevice>& out) {
    const FunctionTrace trace("VEXADeviceManager::findDevices");
    if (!findServices()) {
        return false;
    }
    // One record for all services: a service that cannot be read is listed with the values of the
    // one before it, and dropped by the filter when those do not match. This is intended.
    VEXADevice device;
    for (unsigned int service = 0; service < foundServices.size(); ++service) {
        (void)getDeviceInterfaceDetails(service, device);
        out.push_back(device);
    }
    return true;
}

bool VEXADeviceManager::getDeviceInterfaceDetails(unsigned int service, VEXADevice& out) {
    const FunctionTrace trace("VEXADeviceManager::getDeviceInterfaceDetails");
    const UdevDevice tty = takeService(service);
    const char* node = tty ? udev_device_get_devnode(tty.get()) : nullptr;
    if (node == nullptr) {
        VEXALog(kLogError, "bsdPathAsCFString not found");
        return false;
    }
    udev_device* usbDevice = usbDeviceOf(tty.get());
    const char* product =
        usbDevice == nullptr ? nullptr : udev_device_get_sysattr_value(usbDevice, "product");
    if (product == nullptr) {
        VEXALog(kLogError, "productNameAsCFString not found");
        return false;
    }
    const std::optional<std::string> vendorId = identifier(usbDevice, "idVendor");
    if (!vendorId) {
        VEXALog(kLogError, "vendorIdAsCFNumber not found");
        return false;
    }
    const std::optional<std::string> productId = identifier(usbDevice, "idProduct");
    if (!productId) {
        VEXALog(kLogError, "productIdAsCFNumber not found");
        return false;
    }
    out = VEXADevice(udev_device_get_syspath(tty.get()), node, product, *vendorId, *productId);
    return true;
}

#include "simulator/usb_testbed.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <umockdev.h>
#include <unistd.h>

namespace simulator {

namespace {

constexpr int kAcmMajor = 166;

std::string usbPath(std::size_t device) {
    // Two digits keep the order of the paths that of the devices.
    char path[64];
    (void)std::snprintf(path, sizeof path, "/devices/pci0000:00/0000:00:14.0/usb1/1-%02zu", device);
    return path;
}

std::string ttyPath(std::size_t device) {
    char path[64];
    (void)std::snprintf(path, sizeof path, "/1-%02zu:1.0/tty/ttyACM%zu", device, device);
    return usbPath(device) + path;
}

std::string nodeName(std::size_t device) {
    return "ttyACM" + std::to_string(device);
}

std::string attributeLine(const char* name, const std::optional<std::string>& value) {
    std::string line;
    if (value) {
        line = "A: " + std::string(name) + "=";
        for (const char c : *value) {
            line += c == '\\' ? "\\\\" : std::string(1, c);
        }
        line += "\\n\n";
    }
    return line;
}

std::string description(std::size_t number, const UsbDevice& device) {
    const std::string interfacePath =
        usbPath(number) + usbPath(number).substr(usbPath(number).rfind('/')) + ":1.0";
    return "P: " + usbPath(number) + "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n" +
           attributeLine("idVendor", device.vendorId) +
           attributeLine("idProduct", device.productId) + attributeLine("product", device.product) +
           "\n" + "P: " + interfacePath + "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_interface\n\n" +
           "P: " + ttyPath(number) + "\nN: " + nodeName(number) +
           "\nE: SUBSYSTEM=tty\nE: DEVNAME=/dev/" + nodeName(number) +
           "\nA: dev=" + std::to_string(kAcmMajor) + ":" + std::to_string(number) + "\n\n";
}

std::string contentOf(const std::string& file, std::string& error) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        error = "cannot read " + file;
    }
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// The testbed of umockdev behind the opaque pointer.
UMockdevTestbed* testbedOf(void* testbed) {
    return static_cast<UMockdevTestbed*>(testbed);
}

} // namespace

UsbTestbed::UsbTestbed() : m_testbed(umockdev_testbed_new()) {
}

UsbTestbed::~UsbTestbed() {
    for (const Line& line : m_lines) {
        (void)close(line.hostEnd);
    }
    g_object_unref(m_testbed);
}

bool UsbTestbed::plugIn(const std::vector<UsbDevice>& devices, const std::string& further,
                        std::string& error) {
    std::string all;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        all += description(i, devices[i]);
    }
    if (!further.empty()) {
        all += contentOf(further, error);
    }
    GError* failure = nullptr;
    if (error.empty() && !all.empty() &&
        umockdev_testbed_add_from_string(testbedOf(m_testbed), all.c_str(), &failure) == 0) {
        error = failure->message;
        g_error_free(failure);
    }
    for (std::size_t i = 0; error.empty() && i < devices.size(); ++i) {
        (void)openLine(i, error);
    }
    return error.empty();
}

bool UsbTestbed::openLine(std::size_t device, std::string& error) {
    const std::string node = "/dev/" + nodeName(device);
    const int terminalEnd = umockdev_testbed_get_dev_fd(testbedOf(m_testbed), node.c_str());
    const char* slave = terminalEnd < 0 ? nullptr : ptsname(terminalEnd);
    const int hostEnd = slave == nullptr ? -1 : open(slave, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (hostEnd < 0) {
        error = "cannot open the line of " + node;
        return false;
    }
    (void)fcntl(terminalEnd, F_SETFD, FD_CLOEXEC);
    m_lines.push_back({terminalEnd, hostEnd});
    return true;
}

void UsbTestbed::pull(std::size_t device) {
    Line& line = m_lines[device];
    // The testbed closes its descriptor itself at the end, so the number stays taken.
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    (void)dup3(nothing, line.terminalEnd, O_CLOEXEC);
    (void)close(nothing);
    line.terminalEnd = -1;
    umockdev_testbed_remove_device(testbedOf(m_testbed), ("/sys" + ttyPath(device)).c_str());
    umockdev_testbed_remove_device(testbedOf(m_testbed), ("/sys" + usbPath(device)).c_str());
}

void UsbTestbed::enterInChild() {
    const char* preloaded = std::getenv("LD_PRELOAD");
    const std::string all = std::string("libumockdev-preload.so.0") +
                            (preloaded == nullptr ? "" : std::string(":") + preloaded);
    (void)setenv("LD_PRELOAD", all.c_str(), 1);
}

} // namespace simulator

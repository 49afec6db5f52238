#include "simulator/usb_testbed.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/inotify.h>
#include <termios.h>
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

} // namespace

struct UsbTestbed::Testbed {
    Testbed() : umockdev(umockdev_testbed_new()) {}
    ~Testbed() { g_object_unref(umockdev); }
    Testbed(const Testbed&) = delete;
    Testbed& operator=(const Testbed&) = delete;

    UMockdevTestbed* umockdev;
};

UsbTestbed::UsbTestbed()
    : m_testbed(std::make_unique<Testbed>()), m_useWatch(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
}

UsbTestbed::~UsbTestbed() = default;

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
        umockdev_testbed_add_from_string(m_testbed->umockdev, all.c_str(), &failure) == 0) {
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
    const int terminalEnd = umockdev_testbed_get_dev_fd(m_testbed->umockdev, node.c_str());
    const char* host = terminalEnd < 0 ? nullptr : ptsname(terminalEnd);
    Descriptor hostEnd(host == nullptr ? -1 : open(host, O_RDWR | O_NOCTTY | O_CLOEXEC));
    const int watch = hostEnd.get() < 0
                          ? -1
                          : inotify_add_watch(m_useWatch.get(), host,
                                              IN_OPEN | IN_CLOSE_WRITE | IN_CLOSE_NOWRITE);
    if (watch < 0) {
        error = "cannot open the line of " + node;
        return false;
    }
    (void)fcntl(terminalEnd, F_SETFD, FD_CLOEXEC);
    (void)fcntl(terminalEnd, F_SETFL, O_RDWR | O_NONBLOCK);
    m_lines.push_back({terminalEnd, std::move(hostEnd), watch});
    return true;
}

std::vector<std::size_t> UsbTestbed::takeAbandoned() {
    std::vector<std::size_t> abandoned;
    alignas(inotify_event) char events[4096];
    const ssize_t size = read(m_useWatch.get(), events, sizeof events);
    for (ssize_t at = 0; at < size;) {
        const auto* event = reinterpret_cast<const inotify_event*>(events + at);
        const auto line = std::find_if(m_lines.begin(), m_lines.end(), [&](const Line& candidate) {
            return candidate.watch == event->wd;
        });
        if (line != m_lines.end()) {
            line->users += (event->mask & IN_OPEN) != 0 ? 1 : -1;
            if (line->users == 0) {
                abandoned.push_back(static_cast<std::size_t>(line - m_lines.begin()));
            }
        }
        at += static_cast<ssize_t>(sizeof *event) + event->len;
    }
    return abandoned;
}

void UsbTestbed::flush(std::size_t device) {
    (void)tcflush(m_lines[device].hostEnd.get(), TCIFLUSH);
    char bytes[4096];
    while (line(device) >= 0 && read(line(device), bytes, sizeof bytes) > 0) {
    }
}

void UsbTestbed::pull(std::size_t device) {
    Line& line = m_lines[device];
    // The testbed closes its descriptor itself at the end, so the number stays taken.
    const Descriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
    (void)dup3(nothing.get(), line.terminalEnd, O_CLOEXEC);
    line.terminalEnd = -1;
    for (const std::string& path : {ttyPath(device), usbPath(device)}) {
        umockdev_testbed_remove_device(m_testbed->umockdev, ("/sys" + path).c_str());
    }
}

void UsbTestbed::enterInChild() {
    const char* preloaded = std::getenv("LD_PRELOAD");
    const std::string all = std::string("libumockdev-preload.so.0") +
                            (preloaded == nullptr ? "" : std::string(":") + preloaded);
    (void)setenv("LD_PRELOAD", all.c_str(), 1);
}

} // namespace simulator

#include "tests/support/failing_udev.h"

#include <cerrno>
#include <dlfcn.h>
#include <libudev.h>

namespace failing_udev {

bool hasNoContext = false;
bool cannotMatch = false;
bool cannotScan = false;

namespace {

template<typename Function> Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace
} // namespace failing_udev

using namespace failing_udev;

extern "C" {

udev* udev_new() {
    return hasNoContext ? nullptr : next<decltype(udev_new)>("udev_new")();
}

int udev_enumerate_add_match_subsystem(udev_enumerate* search, const char* subsystem) {
    return cannotMatch ? -ENOMEM
                       : next<decltype(udev_enumerate_add_match_subsystem)>(
                             "udev_enumerate_add_match_subsystem")(search, subsystem);
}

int udev_enumerate_scan_devices(udev_enumerate* search) {
    return cannotScan
               ? -EACCES
               : next<decltype(udev_enumerate_scan_devices)>("udev_enumerate_scan_devices")(search);
}

} // extern "C"

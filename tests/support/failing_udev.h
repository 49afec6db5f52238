// Lets single calls of libudev fail. They stand before the library's in the link order and pass
// everything else on.
#pragma once

namespace failing_udev {

extern bool hasNoContext; ///< udev_new
extern bool cannotMatch;  ///< udev_enumerate_add_match_subsystem
extern bool cannotScan;   ///< udev_enumerate_scan_devices

} // namespace failing_udev

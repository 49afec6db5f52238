#include "app/log.h"
#include "devices/device_manager.h"

void VEXADeviceManager::findAllPCSCDevices() {
    const FunctionTrace trace("VEXADeviceManager::findAllPCSCDevices");
}

// The port of a terminal behind a PC/SC reader.
#pragma once

#include "devices/device_port.h"

class VEXAPcscPort : public VEXADevicePort {
public:
    explicit VEXAPcscPort(const char* readerName);
    bool ExecuteCommand(unsigned char* in, int inLen, unsigned char* out, int* outLen,
                        int auxTimeout, int responseTimeoutMs) override;
    bool closePort() override;
    int getResponseTimeout() override { return 3000; }
    int getAuxTimeout() override { return 500; }
};

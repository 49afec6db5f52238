#include "devices/pcsc_port.h"

VEXAPcscPort::VEXAPcscPort(const char* /*readerName*/) {
}

bool VEXAPcscPort::ExecuteCommand(unsigned char* /*in*/, int /*inLen*/, unsigned char* /*out*/,
                                  int* outLen, int /*auxTimeout*/, int /*responseTimeoutMs*/) {
    *outLen = 0;
    return false;
}

bool VEXAPcscPort::closePort() {
    return true;
}

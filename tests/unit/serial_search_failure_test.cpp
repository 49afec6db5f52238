// A system whose devices cannot be searched.

#include "configuration/config.h"
#include "devices/device_manager.h"
#include "tests/support/failing_udev.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

class SerialSearchFailureTest : public testing::Test {
protected:
    SerialSearchFailureTest() { g_configParams = VEXAConfig{}; }
    ~SerialSearchFailureTest() override {
        failing_udev::hasNoContext = failing_udev::cannotMatch = failing_udev::cannotScan = false;
    }

    static Lines logOfSearch() {
        VEXADeviceManager manager;
        std::vector<VEXADevice> devices;
        const LogCapture log;
        EXPECT_FALSE(manager.findDevices(devices));
        EXPECT_TRUE(devices.empty());
        return log.lines();
    }
};

TEST_F(SerialSearchFailureTest, WithoutAContextOrAMatchThereIsNothingToAskFor) {
    const Lines expected = {"VEXALD => VEXADeviceManager::findDevices",
                            "VEXALD No AppleUSBCDC device found",
                            "VEXALD <= VEXADeviceManager::findDevices"};
    failing_udev::hasNoContext = true;
    EXPECT_EQ(logOfSearch(), expected);
    failing_udev::hasNoContext = false;
    failing_udev::cannotMatch = true;
    EXPECT_EQ(logOfSearch(), expected);
}

TEST_F(SerialSearchFailureTest, AFailedSearchIsAnErrorInTheLog) {
    failing_udev::cannotScan = true;
    EXPECT_EQ(logOfSearch(), Lines({"VEXALD => VEXADeviceManager::findDevices",
                                    "VEXALD    findPort : IOServiceGetMatchingServices failed",
                                    "VEXALD <= VEXADeviceManager::findDevices"}));
}

TEST_F(SerialSearchFailureTest, TheListThenStaysEmpty) {
    failing_udev::cannotScan = true;
    VEXADeviceManager manager;
    manager.findSerialDevices();
    EXPECT_TRUE(manager.getDeviceList().empty());
}

} // namespace

// The device record, the comparison of identifiers and the filter over what the system reports.

#include "configuration/config.h"
#include "devices/device_manager.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

// What the system reports, in the place of its registry.
std::vector<VEXADevice> reportedDevices;
bool registrySearched = true;

} // namespace

bool VEXADeviceManager::findDevices(std::vector<VEXADevice>& out) {
    out.insert(out.end(), reportedDevices.begin(), reportedDevices.end());
    return registrySearched;
}

bool VEXADeviceManager::getDeviceInterfaceDetails(unsigned int, VEXADevice&) {
    return false;
}

namespace {

std::string nameOf(const std::string& product) {
    return VEXADevice("/sys/x", "/dev/ttyACM0", product, "F055", "0012").getName();
}

VEXADevice device(const std::string& product, const std::string& vid, const std::string& pid) {
    return {"/sys/" + product, "/dev/" + product, product + " - terminal", vid, pid};
}

class DeviceFilterTest : public testing::Test {
protected:
    DeviceFilterTest() {
        registrySearched = true;
        reportedDevices.clear();
        g_configParams = VEXAConfig{};
    }
    ~DeviceFilterTest() override { g_configParams = VEXAConfig{}; }

    static Names listed() {
        VEXADeviceManager manager;
        Names names;
        for (const VEXADevice& found : manager.getDeviceList()) {
            names.push_back(found.getName());
        }
        return names;
    }
};

TEST(DeviceTest, TheDefaultRecordIsEmpty) {
    const VEXADevice none;
    EXPECT_EQ(none.getName(), "");
    EXPECT_EQ(none.getPortCOM(), "");
    EXPECT_EQ(none.getVID(), "");
    EXPECT_EQ(none.getPID(), "");
    EXPECT_EQ(none.getDevicePath(), "");
    EXPECT_FALSE(none.isPCSC());
}

TEST(DeviceTest, ASerialDeviceKeepsItsValues) {
    const VEXADevice serial("/sys/x", "/dev/ttyACM0", "T1 - terminal", "F055", "0012");
    EXPECT_EQ(serial.getDevicePath(), "/sys/x");
    EXPECT_EQ(serial.getPortCOM(), "/dev/ttyACM0");
    EXPECT_EQ(serial.getVID(), "F055");
    EXPECT_EQ(serial.getPID(), "0012");
    EXPECT_FALSE(serial.isPCSC());
}

TEST(DeviceTest, TheNameEndsBeforeABlankAndAHyphen) {
    EXPECT_EQ(nameOf("VX500 - Terminal"), "VX500");
    EXPECT_EQ(nameOf("VX 500 -Terminal - two"), "VX 500");
    EXPECT_EQ(nameOf("VX-500 - Terminal"), "VX-500");
    EXPECT_EQ(nameOf(" - nothing before"), "");
    EXPECT_EQ(nameOf("ends so -"), "ends so");
}

TEST(DeviceTest, ANameWithoutThemLosesItsLastCharacter) {
    EXPECT_EQ(nameOf("Terminal"), "Termina");
    EXPECT_EQ(nameOf("Terminal-"), "Terminal");
    EXPECT_EQ(nameOf("Terminal "), "Terminal");
    EXPECT_EQ(nameOf("T"), "");
}

TEST(DeviceTest, AnEmptyProductNameGivesAnEmptyName) {
    EXPECT_EQ(nameOf(""), "");
}

TEST(DeviceTest, AReaderKeepsItsNameWhole) {
    const VEXADevice reader("Reader 00 00", "PCSC", "Reader 00 00 - (X)", "", "");
    EXPECT_TRUE(reader.isPCSC());
    EXPECT_EQ(reader.getName(), "Reader 00 00 - (X)");
}

TEST(DeviceTest, OnlyTheExactPortNameMarksAReader) {
    EXPECT_FALSE(VEXADevice("x", "pcsc", "name", "", "").isPCSC());
    EXPECT_FALSE(VEXADevice("x", "PCSC ", "name", "", "").isPCSC());
}

TEST(DeviceTest, EachGetterLogsItsNameOnce) {
    const LogCapture log;
    const VEXADevice none("", "", "", "", "");
    (void)none.getPortCOM();
    (void)none.getName();
    (void)none.getVID();
    (void)none.getPID();
    (void)none.getDevicePath();
    (void)none.isPCSC();
    EXPECT_EQ(log.lines(), Names({"VEXALD VEXADevice::VEXADevice", "VEXALD VEXADevice::getPortCOM",
                                  "VEXALD VEXADevice::getName", "VEXALD VEXADevice::getVID",
                                  "VEXALD VEXADevice::getPID", "VEXALD VEXADevice::getDevicePath",
                                  "VEXALD VEXADevice::isPCSC"}));
}

TEST_F(DeviceFilterTest, IdentifiersMatchWhateverTheCaseOfTheirLetters) {
    VEXADeviceManager manager;
    EXPECT_TRUE(manager.compareVPID("F055", "f055"));
    EXPECT_TRUE(manager.compareVPID("abCD", "ABcd"));
    EXPECT_FALSE(manager.compareVPID("F055", "F056"));
    EXPECT_FALSE(manager.compareVPID("F055", "F05"));
    EXPECT_TRUE(manager.compareVPID("", ""));
}

TEST_F(DeviceFilterTest, CharactersThatAreNoLettersMatchOnlyThemselves) {
    VEXADeviceManager manager;
    EXPECT_FALSE(manager.compareVPID("0", "P")); // 32 apart, but only one is a letter
    EXPECT_FALSE(manager.compareVPID("[", "{")); // 32 apart, and none is
    EXPECT_FALSE(manager.compareVPID("A", "b"));
}

TEST_F(DeviceFilterTest, OneCarriageReturnAtTheEndIsIgnored) {
    VEXADeviceManager manager;
    EXPECT_TRUE(manager.compareVPID("F055\r", "f055"));
    EXPECT_TRUE(manager.compareVPID("F055", "f055\r"));
    EXPECT_TRUE(manager.compareVPID("F055\r", "f055\r"));
    EXPECT_TRUE(manager.compareVPID("\r", ""));
    EXPECT_FALSE(manager.compareVPID("F055\r\r", "f055"));
    EXPECT_FALSE(manager.compareVPID("F055\n", "f055"));
}

TEST_F(DeviceFilterTest, WithoutConfiguredVendorsEveryDeviceWithAVendorIsListed) {
    reportedDevices = {device("a", "F055", "0012"), device("b", "", "0012"),
                       device("c", "0403", "")};
    g_configParams.PID = {"9999"};
    EXPECT_EQ(listed(), Names({"a", "c"}));
}

TEST_F(DeviceFilterTest, OnlyPairsAtTheSamePlaceAreSupported) {
    g_configParams.VID = {"f055", "0403"};
    g_configParams.PID = {"0012", "6001"};
    reportedDevices = {device("a", "F055", "0012"), device("b", "F055", "6001"),
                       device("c", "0403", "6001"), device("d", "0403", "0012")};
    EXPECT_EQ(listed(), Names({"a", "c"}));
}

TEST_F(DeviceFilterTest, WhatLiesBeyondTheShorterListIsNeverUsed) {
    g_configParams.VID = {"f055", "0403"};
    g_configParams.PID = {"0012"};
    reportedDevices = {device("a", "F055", "0012"), device("b", "0403", "6001")};
    EXPECT_EQ(listed(), Names({"a"}));
}

TEST_F(DeviceFilterTest, VendorsWithoutProductsAdmitNothing) {
    g_configParams.VID = {"f055"};
    reportedDevices = {device("a", "F055", "0012")};
    EXPECT_EQ(listed(), Names());
}

TEST_F(DeviceFilterTest, APairConfiguredTwiceListsADeviceOnce) {
    g_configParams.VID = {"f055", "f055"};
    g_configParams.PID = {"0012", "0012"};
    reportedDevices = {device("a", "F055", "0012")};
    EXPECT_EQ(listed(), Names({"a"}));
}

TEST_F(DeviceFilterTest, AConfiguredIdentifierMayEndWithACarriageReturn) {
    g_configParams.VID = {"f055\r"};
    g_configParams.PID = {"0012\r"};
    reportedDevices = {device("a", "F055", "0012")};
    EXPECT_EQ(listed(), Names({"a"}));
}

TEST_F(DeviceFilterTest, TheSearchIsLoggedWithItsResult) {
    VEXADeviceManager manager;
    for (const bool searched : {true, false}) {
        registrySearched = searched;
        const LogCapture log;
        manager.findSerialDevices();
        EXPECT_EQ(log.lines().front(), "VEXALD => VEXADeviceManager::findAllDevices");
        EXPECT_EQ(log.lines().back(), searched
                                          ? "VEXALD <= VEXADeviceManager::findAllDevices (TRUE)"
                                          : "VEXALD <= VEXADeviceManager::findAllDevices (FALSE)");
    }
}

TEST_F(DeviceFilterTest, EverySearchAppendsUntilTheListIsCleared) {
    reportedDevices = {device("a", "F055", "0012")};
    VEXADeviceManager manager;
    manager.findSerialDevices();
    EXPECT_EQ(manager.getDeviceList().size(), 2U);
    manager.clearDeviceList();
    EXPECT_TRUE(manager.getDeviceList().empty());
}

TEST_F(DeviceFilterTest, ANameIsLookedUpExactlyAndTheFirstWins) {
    reportedDevices = {device("a", "F055", "0012"), device("a", "0403", "6001")};
    VEXADeviceManager manager;
    const LogCapture log;
    EXPECT_EQ(manager.getDevice("a").getVID(), "F055");
    EXPECT_EQ(log.count("VEXALD Device found"), 1U);
    EXPECT_EQ(manager.getDevice("A").getVID(), "");
    EXPECT_EQ(log.count("VEXALD    Device not found"), 1U);
}

} // namespace

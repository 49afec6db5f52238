// The search for readers of the maker, against a PC/SC library that the test scripts.

#include "devices/device_manager.h"
#include "tests/support/log_capture.h"
#include "tests/support/scripted_pcsc.h"

#include <gtest/gtest.h>

#include <algorithm>

// No serial devices.
bool VEXADeviceManager::findDevices(std::vector<VEXADevice>& /*out*/) {
    return true;
}

bool VEXADeviceManager::getDeviceInterfaceDetails(unsigned int /*service*/, VEXADevice& /*out*/) {
    return false;
}

namespace {

using scripted_pcsc::Attribute;
using scripted_pcsc::Reader;
using Lines = std::vector<std::string>;

Attribute text(const std::string& bytes) {
    return {SCARD_S_SUCCESS, bytes, 0};
}

Attribute missing() {
    return {SCARD_E_UNSUPPORTED_FEATURE, "", 0};
}

Reader reader(const std::string& name, const Attribute& serial,
              const Attribute& vendor = text("Halvorin")) {
    return {name, SCARD_S_SUCCESS, vendor, serial};
}

class PcscDiscoveryTest : public testing::Test {
protected:
    PcscDiscoveryTest() { scripted_pcsc::reset(); }

    static std::vector<VEXADevice> found(const std::vector<Reader>& readers) {
        scripted_pcsc::readers = readers;
        VEXADeviceManager manager;
        manager.findAllPCSCDevices();
        return manager.getDeviceList();
    }

    /// "device path|display name" of each.
    static Lines names(const std::vector<Reader>& readers) {
        Lines result;
        for (const VEXADevice& device : found(readers)) {
            result.push_back(device.getDevicePath() + "|" + device.getName());
        }
        return result;
    }
};

TEST_F(PcscDiscoveryTest, ARecordHasThePortPcscAndNoIdentifiers) {
    const std::vector<VEXADevice> devices = found({reader("T 00 00", text("A1"))});
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_TRUE(devices[0].isPCSC());
    EXPECT_EQ(devices[0].getPortCOM(), "PCSC");
    EXPECT_EQ(devices[0].getVID(), "");
    EXPECT_EQ(devices[0].getPID(), "");
    EXPECT_EQ(devices[0].getDevicePath(), "T 00 00");
    EXPECT_EQ(devices[0].getName(), "T 00 00 (A1)");
}

TEST_F(PcscDiscoveryTest, TheCallsComeInOrderAndEverythingIsReleased) {
    (void)found({reader("T 00 00", text("A1"))});
    EXPECT_EQ(scripted_pcsc::calls,
              Lines({"establish scope 2", "connect T 00 00 share 3 protocol 1", "vendor 256",
                     "serial 256", "disconnect 0 disposition 0", "release"}));
}

TEST_F(PcscDiscoveryTest, AReaderIsLoggedByItsDisplayName) {
    scripted_pcsc::readers = {reader("T 00 00", text("A1"))};
    VEXADeviceManager manager;
    const LogCapture log;
    manager.findAllPCSCDevices();
    EXPECT_EQ(log.lines(),
              Lines({"VEXALD => VEXADeviceManager::findAllPCSCDevices",
                     "VEXALD findAllPCSCDevices : Try reader T 00 00",
                     "VEXALD findAllPCSCDevices : serial number not in PCSC name",
                     "VEXALD found reader : T 00 00 (A1)", "VEXALD VEXADevice::VEXADevice",
                     "VEXALD <= VEXADeviceManager::findAllPCSCDevices"}));
}

TEST_F(PcscDiscoveryTest, ASerialNumberInTheNameIsNotRepeated) {
    const LogCapture log;
    EXPECT_EQ(names({reader("T (A1) 00 00", text("A1"))}), Lines({"T (A1) 00 00|T (A1) 00 00"}));
    EXPECT_FALSE(log.contains("VEXALD findAllPCSCDevices : serial number not in PCSC name"));
    EXPECT_TRUE(log.contains("VEXALD found reader : T (A1) 00 00"));
}

TEST_F(PcscDiscoveryTest, TheVendorIsComparedWholeAndIgnoringCase) {
    const LogCapture log;
    EXPECT_EQ(names({reader("A 00 00", text("1"), text("HALVORIN")),
                     reader("B 01 00", text("2"), text("halvorin")),
                     reader("C 02 00", text("3"), text("Halvorin Ltd")),
                     reader("D 03 00", text("4"), text("The Halvorin")),
                     reader("E 04 00", text("5"), text("Halvori")),
                     reader("F 05 00", text("6"), text(""))}),
              Lines({"A 00 00|A 00 00 (1)", "B 01 00|B 01 00 (2)"}));
    EXPECT_EQ(log.count("VEXALD findAllPCSCDevices : Not an Halvorin reader"), 4U);
    EXPECT_EQ(std::count(scripted_pcsc::calls.begin(), scripted_pcsc::calls.end(), "serial 256"),
              2);
}

TEST_F(PcscDiscoveryTest, AVendorWithItsTerminatorCountsToo) {
    EXPECT_EQ(names({reader("A 00 00", text(std::string("A1\0", 3)),
                            text(std::string("Halvorin\0", 9)))}),
              Lines({"A 00 00|A 00 00 (A1)"}));
}

TEST_F(PcscDiscoveryTest, WhatALongerAnswerBeforeHasLeftDoesNotCount) {
    EXPECT_EQ(names({reader("A 00 00", text("A1"), text("Another company, far away")),
                     reader("B 01 00", text("A-serial-number-of-some-length")),
                     reader("C 02 00", text("C1"))}),
              Lines({"B 01 00|B 01 00 (A-serial-number-of-some-length)", "C 02 00|C 02 00 (C1)"}));
}

TEST_F(PcscDiscoveryTest, ReadersThatCannotBeAskedAreLeftOut) {
    std::vector<Reader> readers = {reader("A 00 00", text("1")), reader("B 01 00", text("2")),
                                   reader("C 02 00", text("3"))};
    readers[0].connection = SCARD_E_SHARING_VIOLATION;
    readers[1].vendor = missing();
    const LogCapture log;
    EXPECT_EQ(names(readers), Lines({"C 02 00|C 02 00 (3)"}));
    EXPECT_TRUE(log.contains("VEXALD findAllPCSCDevices SCardConnect failed Error : 0x8010000b"));
    EXPECT_TRUE(log.contains("VEXALD findAllPCSCDevices cannot get SCARD_ATTR_VENDOR_NAME "
                             "Error : 0x8010001f"));
    // No disconnect where there was no connection, one for each of the others.
    EXPECT_EQ(scripted_pcsc::calls,
              Lines({"establish scope 2", "connect A 00 00 share 3 protocol 1",
                     "connect B 01 00 share 3 protocol 1", "vendor 256",
                     "disconnect 1 disposition 0", "connect C 02 00 share 3 protocol 1",
                     "vendor 256", "serial 256", "disconnect 2 disposition 0", "release"}));
}

TEST_F(PcscDiscoveryTest, SlotsThatFollowEachOtherAreOneTerminal) {
    const LogCapture log;
    EXPECT_EQ(names({reader("T 00 00", text("A1")), reader("T 00 01", text("A1")),
                     reader("T 01 00", text("B2")), reader("T 02 00", text("A1"))}),
              Lines({"T 00 00|T 00 00 (A1)", "T 01 00|T 01 00 (B2)", "T 02 00|T 02 00 (A1)"}));
    EXPECT_EQ(log.count("VEXALD Another Slot of the same reader, continue..."), 1U);
    EXPECT_EQ(log.count("VEXALD found reader : T 00 00 (A1)"), 1U);
}

TEST_F(PcscDiscoveryTest, AReaderOfAnotherMakerBetweenSlotsDoesNotPartThem) {
    EXPECT_EQ(names({reader("T 00 00", text("A1")), reader("X 01 00", text("X"), text("Other")),
                     reader("T 00 01", text("A1"))}),
              Lines({"T 00 00|T 00 00 (A1)"}));
}

// The attribute's buffer keeps what the question before has left: the vendor.
TEST_F(PcscDiscoveryTest, AReaderWithoutASerialNumberHasItsVendorForOne) {
    EXPECT_EQ(names({reader("Halvorin T 00 00", missing()), reader("Halvorin T 01 00", missing())}),
              Lines({"Halvorin T 00 00|Halvorin T 00 00"}));
    EXPECT_EQ(names({reader("T 00 00", missing())}), Lines({"T 00 00|T 00 00 (Halvorin)"}));
}

TEST_F(PcscDiscoveryTest, AnEmptySerialNumberAtTheBeginningCountsAsAFurtherSlot) {
    const LogCapture log;
    EXPECT_EQ(names({reader("T 00 00", text("")), reader("T 01 00", text("B2")),
                     reader("T 02 00", text(""))}),
              Lines({"T 01 00|T 01 00 (B2)", "T 02 00|T 02 00"}));
    EXPECT_EQ(log.count("VEXALD Another Slot of the same reader, continue..."), 1U);
}

TEST_F(PcscDiscoveryTest, ASerialNumberAsLongAsTheBufferIsCut) {
    const std::string cut(255, 's');
    for (const DWORD announced : {DWORD{256}, DWORD{257}, DWORD{0xFFFFFFFF}}) {
        const Attribute serial = {SCARD_S_SUCCESS, std::string(256, 's'), announced};
        EXPECT_EQ(names({reader("T 00 00", serial)}), Lines({"T 00 00|T 00 00 (" + cut + ")"}));
    }
}

TEST_F(PcscDiscoveryTest, NamesOfMultiByteCharactersAreCountedInBytes) {
    const std::string name = "Gr\xC3\xB6\xC3\x9F"
                             "e \xE7\xB5\x82\xE7\xAB\xAF 00 00";
    EXPECT_EQ(names({reader(name, text("A1")), reader("T 01 00", text("B2"))}),
              Lines({name + "|" + name + " (A1)", "T 01 00|T 01 00 (B2)"}));
}

TEST_F(PcscDiscoveryTest, AListWithoutItsEndIsReadToTheEndOnly) {
    scripted_pcsc::terminatesList = false;
    EXPECT_EQ(names({reader("T 00 00", text("A1"))}), Lines({"T 00 00|T 00 00 (A1)"}));
}

TEST_F(PcscDiscoveryTest, WithoutReadersNothingIsFoundAndTheContextReleased) {
    EXPECT_EQ(names({}), Lines());
    EXPECT_EQ(scripted_pcsc::calls, Lines({"establish scope 2", "release"}));
}

TEST_F(PcscDiscoveryTest, WithoutAServiceNothingIsFound) {
    scripted_pcsc::establishing = SCARD_E_NO_SERVICE;
    scripted_pcsc::listing = SCARD_E_INVALID_HANDLE;
    EXPECT_EQ(names({reader("T 00 00", text("A1"))}), Lines());
}

TEST_F(PcscDiscoveryTest, AFailedListingFindsNothingAndTheContextIsReleased) {
    scripted_pcsc::listing = SCARD_E_NO_READERS_AVAILABLE;
    EXPECT_EQ(names({reader("T 00 00", text("A1"))}), Lines());
    EXPECT_EQ(scripted_pcsc::calls, Lines({"establish scope 2", "release"}));
}

} // namespace

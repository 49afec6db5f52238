// Enumeration of USB serial devices against a simulated system. Runs with umockdev preloaded.

#include "configuration/config.h"
#include "devices/device_manager.h"
#include "simulator/usb_testbed.h"
#include "tests/support/files.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace {

using simulator::UsbDevice;
using Records = std::vector<std::string>;

const std::string kUsb = "/sys/devices/pci0000:00/0000:00:14.0/usb1";

class SerialDiscoveryTest : public testing::Test {
protected:
    void SetUp() override {
        const char* preloaded = std::getenv("LD_PRELOAD");
        ASSERT_TRUE(preloaded != nullptr && std::strstr(preloaded, "umockdev") != nullptr)
            << "run this with libumockdev-preload.so.0 preloaded, as ctest does";
        g_configParams = VEXAConfig{};
    }

    void plugIn(const std::vector<UsbDevice>& devices, const QByteArray& further = QByteArray()) {
        std::string error;
        const QString file = m_folder.path() + "/further";
        ASSERT_TRUE(writeFile(file, further));
        ASSERT_TRUE(m_testbed.plugIn(devices, file.toStdString(), error)) << error;
    }

    /// Each record as "name|port|vendor|product|path".
    static Records found() {
        VEXADeviceManager manager;
        std::vector<VEXADevice> devices;
        EXPECT_TRUE(manager.findDevices(devices));
        Records records;
        for (const VEXADevice& device : devices) {
            records.push_back(device.getName() + "|" + device.getPortCOM() + "|" + device.getVID() +
                              "|" + device.getPID() + "|" + device.getDevicePath());
        }
        return records;
    }

    static std::string record(int number, const std::string& name, const std::string& ids) {
        const std::string n = std::to_string(number);
        return name + "|/dev/ttyACM" + n + "|" + ids + "|" + kUsb + "/1-0" + n + "/1-0" + n +
               ":1.0/tty/ttyACM" + n;
    }

    simulator::UsbTestbed m_testbed;
    QTemporaryDir m_folder;
};

TEST_F(SerialDiscoveryTest, ASystemWithoutDevicesIsSearchedAndEmpty) {
    EXPECT_EQ(found(), Records());
}

TEST_F(SerialDiscoveryTest, ADeviceCarriesNodeNameIdentifiersAndPath) {
    plugIn({{"f055", "0012", "VX500 - Terminal"}});
    EXPECT_EQ(found(), Records({record(0, "VX500", "F055|0012")}));
}

TEST_F(SerialDiscoveryTest, IdentifiersAreFourUppercaseDigits) {
    plugIn({{"1", "abcd", "T - x"}});
    EXPECT_EQ(found(), Records({record(0, "T", "0001|ABCD")}));
}

TEST_F(SerialDiscoveryTest, DevicesComeInTheOrderOfTheirPaths) {
    plugIn({{"0001", "0001", "A - x"}, {"0002", "0002", "B - x"}, {"0003", "0003", "C - x"}},
           "P: /devices/pci0000:00/0000:00:01.0/usb9/9-1\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\n"
           "A: idVendor=0009\\n\nA: idProduct=0009\\n\nA: product=Z - x\\n\n\n"
           "P: /devices/pci0000:00/0000:00:01.0/usb9/9-1/9-1:1.0/ttyUSB0/tty/ttyUSB0\nN: ttyUSB0\n"
           "E: SUBSYSTEM=tty\nE: DEVNAME=/dev/ttyUSB0\nA: dev=188:0\n\n");
    EXPECT_EQ(found(),
              Records({"Z|/dev/ttyUSB0|0009|0009|/sys/devices/pci0000:00/0000:00:01.0/usb9/9-1/"
                       "9-1:1.0/ttyUSB0/tty/ttyUSB0",
                       record(0, "A", "0001|0001"), record(1, "B", "0002|0002"),
                       record(2, "C", "0003|0003")}));
}

TEST_F(SerialDiscoveryTest, ASerialPortThatIsNotOnUsbIsLeftOut) {
    plugIn({{"f055", "0012", "T - x"}},
           "P: /devices/pnp0/00:01/tty/ttyS0\nN: ttyS0\nE: SUBSYSTEM=tty\nE: DEVNAME=/dev/ttyS0\n"
           "A: dev=4:64\n\n"
           "P: /devices/virtual/tty/tty1\nN: tty1\nE: SUBSYSTEM=tty\nE: DEVNAME=/dev/tty1\n"
           "A: dev=4:1\n\n");
    EXPECT_EQ(found(), Records({record(0, "T", "F055|0012")}));
}

TEST_F(SerialDiscoveryTest, ANonAsciiNameStaysAsItIs) {
    plugIn({{"f055", "0012", "Détecteur № 1 - x"}});
    EXPECT_EQ(found(), Records({record(0, "Détecteur № 1", "F055|0012")}));
}

TEST_F(SerialDiscoveryTest, ADeviceThatCannotBeReadIsListedWithTheValuesBeforeIt) {
    const UsbDevice incomplete[] = {
        {"0403", "6001", std::nullopt},  {std::nullopt, "6001", "T - x"},
        {"0403", std::nullopt, "T - x"}, {"no number", "6001", "T - x"},
        {"0403", "6001x", "T - x"},
    };
    const char* messages[] = {"productNameAsCFString not found", "vendorIdAsCFNumber not found",
                              "productIdAsCFNumber not found", "vendorIdAsCFNumber not found",
                              "productIdAsCFNumber not found"};
    std::vector<UsbDevice> devices = {{"f055", "0012", "First - x"}};
    devices.insert(devices.end(), std::begin(incomplete), std::end(incomplete));
    plugIn(devices);
    const LogCapture log;
    EXPECT_EQ(found(), Records(6, record(0, "First", "F055|0012")));
    for (const char* message : messages) {
        EXPECT_TRUE(log.contains(std::string("VEXALD    ") + message)) << message;
    }
}

TEST_F(SerialDiscoveryTest, TheFirstDeviceIsListedEmptyWhenItCannotBeRead) {
    plugIn({{"f055", "0012", std::nullopt}, {"0403", "6001", "Second - x"}});
    EXPECT_EQ(found(), Records({"||||", record(1, "Second", "0403|6001")}));
}

TEST_F(SerialDiscoveryTest, ADeviceThatCannotBeReadIsDroppedWhenNoIdentifierMatches) {
    plugIn({{"f055", "0012", std::nullopt}, {"f055", "0012", "Second - x"}});
    g_configParams.VID = {"f055"};
    g_configParams.PID = {"0012"};
    VEXADeviceManager manager;
    ASSERT_EQ(manager.getDeviceList().size(), 1U);
    EXPECT_EQ(manager.getDeviceList()[0].getPortCOM(), "/dev/ttyACM1");
}

TEST_F(SerialDiscoveryTest, AServiceThatIsNotThereHasNoPort) {
    plugIn({{"f055", "0012", "T - x"}});
    VEXADeviceManager manager;
    VEXADevice device("kept", "kept", "kept", "", "");
    const LogCapture log;
    EXPECT_FALSE(manager.getDeviceInterfaceDetails(99, device));
    EXPECT_EQ(device.getDevicePath(), "kept");
    EXPECT_TRUE(log.contains("VEXALD    bsdPathAsCFString not found"));
}

TEST_F(SerialDiscoveryTest, APulledDeviceIsGoneFromTheNextSearch) {
    plugIn({{"0001", "0001", "A - x"}, {"0002", "0002", "B - x"}});
    m_testbed.pull(0);
    EXPECT_EQ(found(), Records({record(1, "B", "0002|0002")}));
}

} // namespace

// Enumeration of USB serial devices on macOS, against a registry that the tests describe.

#include "configuration/config.h"
#include "devices/device_manager.h"
#include "tests/support/io_registry.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using io_registry::Entry;
using io_registry::kNoParent;
using io_registry::Number;
using io_registry::Properties;
using Records = std::vector<std::string>;
using Lines = std::vector<std::string>;

constexpr char kSerialClass[] = "IOSerialBSDClient";

/// What the registry keeps on a terminal and on its serial service.
Properties terminal(const std::string& productName = "VX500 - Terminal") {
    return {
        {"Product Name", productName}, {"idVendor", Number{0xF055}}, {"idProduct", Number{0x0012}}};
}
Properties service(const std::string& node = "/dev/cu.usbmodem1") {
    return {{"IOCalloutDevice", node}, {"IODialinDevice", std::string("/dev/tty.usbmodem1")}};
}
Properties without(Properties properties, const std::string& key) {
    properties.erase(key);
    return properties;
}
Properties with(Properties properties, const std::string& key, const io_registry::Value& value) {
    properties[key] = value;
    return properties;
}

/// A record as "name|port|vendor|product|path".
std::string textOf(const VEXADevice& device) {
    return device.getName() + "|" + device.getPortCOM() + "|" + device.getVID() + "|" +
           device.getPID() + "|" + device.getDevicePath();
}

class IokitDiscoveryTest : public testing::Test {
protected:
    IokitDiscoveryTest() {
        io_registry::reset();
        g_configParams = VEXAConfig{};
    }
    ~IokitDiscoveryTest() override {
        // Whatever a test is about: the system's rules are kept.
        EXPECT_EQ(io_registry::heldReferences(), 0U);
        EXPECT_EQ(io_registry::errors(), Lines());
    }

    /// Plugs in a terminal: its USB device, with the interface and the serial service below.
    static Entry plugIn(const Properties& device, const Properties& serial) {
        const Entry usb = io_registry::add(kNoParent, "USBDevice", device);
        return io_registry::add(io_registry::add(usb, "USBInterface"), kSerialClass, serial);
    }

    /// A serial service whose ancestors, the nearest first, carry these properties.
    static Entry below(const std::vector<Properties>& ancestors, const Properties& serial) {
        Entry parent = kNoParent;
        for (auto level = ancestors.rbegin(); level != ancestors.rend(); ++level) {
            parent = io_registry::add(parent, "A", *level);
        }
        return io_registry::add(parent, kSerialClass, serial);
    }

    static Records found(bool searched = true) {
        std::vector<VEXADevice> devices;
        EXPECT_EQ(VEXADeviceManager().findDevices(devices), searched);
        Records records;
        for (const VEXADevice& device : devices) {
            records.push_back(textOf(device));
        }
        return records;
    }

    /// Reads one service, which must fail and leave the record alone.
    /// \return what is logged between the entry and the exit line
    static Lines failure(Entry entry) {
        VEXADeviceManager manager;
        VEXADevice device("kept", "kept", "kept.", "kept", "kept");
        const LogCapture log;
        EXPECT_FALSE(manager.getDeviceInterfaceDetails(io_registry::reference(entry), device));
        Lines lines = log.lines();
        EXPECT_EQ(textOf(device), "kept|kept|kept|kept|kept");
        EXPECT_GE(lines.size(), 2U);
        EXPECT_EQ(lines.front(), "VEXALD => VEXADeviceManager::getDeviceInterfaceDetails");
        EXPECT_EQ(lines.back(), "VEXALD <= VEXADeviceManager::getDeviceInterfaceDetails");
        return {lines.begin() + 1, lines.end() - 1};
    }
};

const std::string kRecord = "VX500|/dev/cu.usbmodem1|F055|0012|IOService:";

// --- The search

TEST_F(IokitDiscoveryTest, AnEmptyRegistryIsSearchedAndEmpty) {
    EXPECT_EQ(found(), Records());
}

TEST_F(IokitDiscoveryTest, ATerminalCarriesNodeNameIdentifiersAndPath) {
    plugIn(terminal(), service());
    EXPECT_EQ(found(), Records({kRecord + "/USBDevice/USBInterface/IOSerialBSDClient"}));
}

TEST_F(IokitDiscoveryTest, TerminalsComeInTheOrderOfTheRegistry) {
    plugIn(terminal("B - x"), service("/dev/cu.b"));
    plugIn(terminal("A - x"), service("/dev/cu.a"));
    const Records records = found();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0], "B|/dev/cu.b|F055|0012|IOService:"
                          "/USBDevice/USBInterface/IOSerialBSDClient");
    EXPECT_EQ(records[1], "A|/dev/cu.a|F055|0012|IOService:"
                          "/USBDevice/USBInterface/IOSerialBSDClient");
}

TEST_F(IokitDiscoveryTest, AServiceOfAnotherClassIsLeftOut) {
    const Entry usb = io_registry::add(kNoParent, "USBDevice", terminal());
    io_registry::add(usb, "IOModemSerialStreamSync", service());
    EXPECT_EQ(found(), Records());
}

TEST_F(IokitDiscoveryTest, WithoutAMatchingDictionaryNothingIsSearched) {
    plugIn(terminal(), service());
    io_registry::matchingFails = true;
    VEXADeviceManager manager;
    std::vector<VEXADevice> devices;
    const LogCapture log;
    EXPECT_FALSE(manager.findDevices(devices));
    EXPECT_TRUE(devices.empty());
    EXPECT_EQ(log.lines(), Lines({"VEXALD => VEXADeviceManager::findDevices",
                                  "VEXALD No AppleUSBCDC device found",
                                  "VEXALD <= VEXADeviceManager::findDevices"}));
}

TEST_F(IokitDiscoveryTest, ASearchThatFailsIsAnError) {
    plugIn(terminal(), service());
    io_registry::searchResult = 5;
    VEXADeviceManager manager;
    std::vector<VEXADevice> devices;
    const LogCapture log;
    EXPECT_FALSE(manager.findDevices(devices));
    EXPECT_TRUE(devices.empty());
    EXPECT_EQ(log.lines(), Lines({"VEXALD => VEXADeviceManager::findDevices",
                                  "VEXALD    findPort : IOServiceGetMatchingServices failed",
                                  "VEXALD <= VEXADeviceManager::findDevices"}));
}

TEST_F(IokitDiscoveryTest, TheResultOfTheSearchIsLogged) {
    VEXADeviceManager manager;
    {
        const LogCapture log;
        manager.findSerialDevices();
        EXPECT_EQ(log.lines().back(), "VEXALD <= VEXADeviceManager::findAllDevices (TRUE)");
    }
    io_registry::matchingFails = true;
    const LogCapture log;
    manager.findSerialDevices();
    EXPECT_EQ(log.lines().back(), "VEXALD <= VEXADeviceManager::findAllDevices (FALSE)");
}

// --- A service that cannot be read

TEST_F(IokitDiscoveryTest, TheFirstServiceIsListedEmptyWhenItCannotBeRead) {
    plugIn(without(terminal(), "Product Name"), service());
    plugIn(terminal("Second - x"), service("/dev/cu.2"));
    EXPECT_EQ(found(), Records({"||||", "Second|/dev/cu.2|F055|0012|IOService:"
                                        "/USBDevice/USBInterface/IOSerialBSDClient"}));
}

TEST_F(IokitDiscoveryTest, TheSecondServiceIsListedWithTheValuesOfTheFirst) {
    plugIn(terminal(), service());
    plugIn(terminal("Second - x"), {});
    const Records records = found();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0], kRecord + "/USBDevice/USBInterface/IOSerialBSDClient");
    EXPECT_EQ(records[1], records[0]);
}

TEST_F(IokitDiscoveryTest, AServiceThatCannotBeReadIsDroppedWhenNoIdentifierMatches) {
    plugIn(terminal("First - x"), {});
    plugIn(terminal("Second - x"), service("/dev/cu.2"));
    g_configParams.VID = {"f055"};
    g_configParams.PID = {"0012"};
    VEXADeviceManager manager;
    ASSERT_EQ(manager.getDeviceList().size(), 1U);
    EXPECT_EQ(manager.getDeviceList()[0].getPortCOM(), "/dev/cu.2");
}

TEST_F(IokitDiscoveryTest, AMissingCalloutPathIsNamed) {
    EXPECT_EQ(failure(plugIn(terminal(), without(service(), "IOCalloutDevice"))),
              Lines({"VEXALD    bsdPathAsCFString not found"}));
}

TEST_F(IokitDiscoveryTest, AMissingProductNameIsNamed) {
    EXPECT_EQ(failure(plugIn(without(terminal(), "Product Name"), service())),
              Lines({"VEXALD    productNameAsCFString not found"}));
}

TEST_F(IokitDiscoveryTest, AMissingVendorIdIsNamed) {
    EXPECT_EQ(failure(plugIn(without(terminal(), "idVendor"), service())),
              Lines({"VEXALD    vendorIdAsCFNumber not found"}));
}

TEST_F(IokitDiscoveryTest, AMissingProductIdIsNamed) {
    EXPECT_EQ(failure(plugIn(without(terminal(), "idProduct"), service())),
              Lines({"VEXALD    productIdAsCFNumber not found"}));
}

TEST_F(IokitDiscoveryTest, OfSeveralMissingPropertiesTheFirstIsNamed) {
    EXPECT_EQ(failure(plugIn({}, {})), Lines({"VEXALD    bsdPathAsCFString not found"}));
    EXPECT_EQ(failure(plugIn({}, service())), Lines({"VEXALD    productNameAsCFString not found"}));
    EXPECT_EQ(failure(plugIn({{"Product Name", std::string("T - x")}}, service())),
              Lines({"VEXALD    vendorIdAsCFNumber not found"}));
}

TEST_F(IokitDiscoveryTest, AServiceWithoutAParentHasOnlyItsNode) {
    EXPECT_EQ(failure(io_registry::add(kNoParent, kSerialClass, service())),
              Lines({"VEXALD    productNameAsCFString not found"}));
    EXPECT_EQ(failure(io_registry::add(kNoParent, kSerialClass)),
              Lines({"VEXALD    bsdPathAsCFString not found"}));
}

TEST_F(IokitDiscoveryTest, APropertyOfAnotherTypeCountsAsMissing) {
    const io_registry::Value number = Number{1};
    const io_registry::Value text = std::string("f055");
    EXPECT_EQ(failure(plugIn(terminal(), with(service(), "IOCalloutDevice", number))),
              Lines({"VEXALD    bsdPathAsCFString not found"}));
    EXPECT_EQ(failure(plugIn(with(terminal(), "Product Name", io_registry::Data{}), service())),
              Lines({"VEXALD    productNameAsCFString not found"}));
    EXPECT_EQ(failure(plugIn(with(terminal(), "idVendor", text), service())),
              Lines({"VEXALD    vendorIdAsCFNumber not found"}));
    EXPECT_EQ(failure(plugIn(with(terminal(), "idProduct", io_registry::Data{}), service())),
              Lines({"VEXALD    productIdAsCFNumber not found"}));
}

// --- The walk over the ancestors

TEST_F(IokitDiscoveryTest, ATerminalIsFoundFromTheFirstToTheFifthAncestor) {
    std::string path = "/A/IOSerialBSDClient";
    std::vector<Properties> ancestors = {terminal()};
    for (int level = 1; level <= 5; ++level) {
        io_registry::reset();
        below(ancestors, service());
        EXPECT_EQ(found(), Records({kRecord + path})) << level;
        ancestors.insert(ancestors.begin(), Properties{});
        path = "/A" + path;
    }
}

TEST_F(IokitDiscoveryTest, TheSixthAncestorIsOutOfReach) {
    EXPECT_EQ(failure(below({{}, {}, {}, {}, {}, terminal()}, service())),
              Lines({"VEXALD    productNameAsCFString not found"}));
}

TEST_F(IokitDiscoveryTest, TheProductNameMayStandBelowTheIdentifiers) {
    below(
        {without(without(terminal("Near - x"), "idVendor"), "idProduct"), {}, terminal("Far - x")},
        service());
    EXPECT_EQ(found(), Records({"Near|/dev/cu.usbmodem1|F055|0012|IOService:"
                                "/A/A/A/IOSerialBSDClient"}));
}

TEST_F(IokitDiscoveryTest, TheWalkEndsAtTheFirstVendorId) {
    EXPECT_EQ(failure(below({without(terminal(), "idProduct"), terminal()}, service())),
              Lines({"VEXALD    productIdAsCFNumber not found"}));
    EXPECT_EQ(failure(below({{{"idVendor", Number{1}}}, terminal()}, service())),
              Lines({"VEXALD    productNameAsCFString not found"}));
}

TEST_F(IokitDiscoveryTest, TheWalkEndsAtTheFirstProductId) {
    EXPECT_EQ(failure(below({without(terminal(), "idVendor"), terminal()}, service())),
              Lines({"VEXALD    vendorIdAsCFNumber not found"}));
}

TEST_F(IokitDiscoveryTest, IdentifiersOfTheServiceItselfAreNotRead) {
    EXPECT_EQ(failure(io_registry::add(kNoParent, kSerialClass,
                                       with(terminal(), "IOCalloutDevice", std::string("/dev/x")))),
              Lines({"VEXALD    productNameAsCFString not found"}));
}

TEST_F(IokitDiscoveryTest, TheCalloutPathMayStandOnAnAncestorOnly) {
    below({with(terminal(), "IOCalloutDevice", std::string("/dev/cu.above"))}, {});
    EXPECT_EQ(found(), Records({"VX500|/dev/cu.above|F055|0012|IOService:/A/IOSerialBSDClient"}));
}

TEST_F(IokitDiscoveryTest, TheServicesOwnCalloutPathGoesFirst) {
    below({with(terminal(), "IOCalloutDevice", std::string("/dev/cu.above"))}, service());
    EXPECT_EQ(found(), Records({kRecord + "/A/IOSerialBSDClient"}));
}

// --- Numbers and texts

TEST_F(IokitDiscoveryTest, NumbersOfAnyWidthAreRead) {
    const Properties device = with(terminal(), "idVendor", Number{0xABCD, kCFNumberSInt64Type});
    below({with(device, "idProduct", Number{0x1A, kCFNumberSInt8Type})}, service());
    below({with(device, "idProduct", Number{0x0123, kCFNumberSInt16Type})}, service());
    const Records records = found();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0], "VX500|/dev/cu.usbmodem1|ABCD|001A|IOService:/A/IOSerialBSDClient");
    EXPECT_EQ(records[1], "VX500|/dev/cu.usbmodem1|ABCD|0123|IOService:/A/IOSerialBSDClient");
}

TEST_F(IokitDiscoveryTest, ANegativeNumberShowsAllItsDigits) {
    const Properties device = with(terminal(), "idVendor", Number{-1, kCFNumberSInt8Type});
    below({with(device, "idProduct", Number{-32768, kCFNumberSInt16Type})}, service());
    EXPECT_EQ(found(), Records({"VX500|/dev/cu.usbmodem1|FFFFFFFF|FFFF8000|IOService:"
                                "/A/IOSerialBSDClient"}));
}

TEST_F(IokitDiscoveryTest, OfANumberThatIsTooWideTheLowerHalfIsRead) {
    below({with(terminal(), "idVendor", Number{0x1'0000'F055, kCFNumberSInt64Type})}, service());
    EXPECT_EQ(found(), Records({kRecord + "/A/IOSerialBSDClient"}));
}

TEST_F(IokitDiscoveryTest, NonAsciiTextsStayAsTheyAre) {
    plugIn(terminal("Détecteur № 1 - x"), service("/dev/cu.modèle-東"));
    EXPECT_EQ(found(), Records({"Détecteur № 1|/dev/cu.modèle-東|F055|0012|IOService:"
                                "/USBDevice/USBInterface/IOSerialBSDClient"}));
}

TEST_F(IokitDiscoveryTest, ATextOf1023BytesIsRead) {
    const std::string name(1023, 'n');
    below({terminal(name)}, service());
    EXPECT_EQ(found(), Records({name.substr(1) + "|/dev/cu.usbmodem1|F055|0012|IOService:"
                                                 "/A/IOSerialBSDClient"}));
}

TEST_F(IokitDiscoveryTest, ATextThatIsLongerCountsAsMissing) {
    EXPECT_EQ(failure(plugIn(terminal(std::string(1024, 'n')), service())),
              Lines({"VEXALD    productNameAsCFString not found"}));
    EXPECT_EQ(failure(plugIn(terminal(), service(std::string(512, 'n') + std::string(512, 'm')))),
              Lines({"VEXALD    bsdPathAsCFString not found"}));
}

TEST_F(IokitDiscoveryTest, ATextThatCannotBeEncodedCountsAsMissing) {
    EXPECT_EQ(
        failure(plugIn(with(terminal(), "Product Name", io_registry::BrokenText{}), service())),
        Lines({"VEXALD    productNameAsCFString not found"}));
}

TEST_F(IokitDiscoveryTest, AnEmptyProductNameGivesAnEmptyName) {
    plugIn(terminal(""), service());
    EXPECT_EQ(found(), Records({"|/dev/cu.usbmodem1|F055|0012|IOService:"
                                "/USBDevice/USBInterface/IOSerialBSDClient"}));
}

TEST_F(IokitDiscoveryTest, APathThatTheSystemCannotTellIsLeftEmpty) {
    const Entry usb = io_registry::add(kNoParent, std::string(500, 'u'), terminal());
    io_registry::add(usb, kSerialClass, service());
    EXPECT_EQ(found(), Records({"VX500|/dev/cu.usbmodem1|F055|0012|"}));
}

TEST_F(IokitDiscoveryTest, AServiceThatIsReadIsLoggedByItsRecordOnly) {
    const Entry entry = plugIn(terminal(), service());
    VEXADeviceManager manager;
    VEXADevice device;
    const LogCapture log;
    EXPECT_TRUE(manager.getDeviceInterfaceDetails(io_registry::reference(entry), device));
    EXPECT_EQ(log.lines(), Lines({"VEXALD => VEXADeviceManager::getDeviceInterfaceDetails",
                                  "VEXALD VEXADevice::VEXADevice",
                                  "VEXALD <= VEXADeviceManager::getDeviceInterfaceDetails"}));
}

} // namespace

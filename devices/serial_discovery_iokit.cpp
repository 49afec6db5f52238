// Enumeration of USB serial devices on macOS: the services that the I/O registry holds.

#include "app/log.h"
#include "devices/device_manager.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitKeys.h>
#include <IOKit/IOKitLib.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace {

/// Owns one reference to an object of the registry, or none.
class RegistryObject {
public:
    explicit RegistryObject(io_object_t object) : m_object(object) {}
    RegistryObject(RegistryObject&& other) noexcept
        : m_object(std::exchange(other.m_object, IO_OBJECT_NULL)) {}
    RegistryObject& operator=(RegistryObject&& other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    RegistryObject(const RegistryObject&) = delete;
    RegistryObject& operator=(const RegistryObject&) = delete;
    ~RegistryObject() {
        if (m_object != IO_OBJECT_NULL) {
            (void)IOObjectRelease(m_object);
        }
    }

    io_object_t get() const { return m_object; }
    explicit operator bool() const { return m_object != IO_OBJECT_NULL; }

private:
    io_object_t m_object;
};

struct ReferenceRelease {
    void operator()(CFTypeRef reference) const { CFRelease(reference); }
};
/// A property of a registry entry, null when it is missing.
using Property = std::unique_ptr<const void, ReferenceRelease>;

/// What a record is made of, as the registry keeps it.
struct Properties {
    Property calloutPath;
    Property productName;
    Property vendorId;
    Property productId;
};

constexpr IOOptionBits kNoOptions = 0;

/// The parent of an entry, none when it has none.
RegistryObject parentOf(const RegistryObject& entry) {
    io_registry_entry_t parent = IO_OBJECT_NULL;
    const bool found =
        IORegistryEntryGetParentEntry(entry.get(), kIOServicePlane, &parent) == KERN_SUCCESS;
    return RegistryObject(found ? parent : IO_OBJECT_NULL);
}

/// Takes a property from an ancestor, unless it is known already.
void complete(Property& property, const RegistryObject& ancestor, CFStringRef key) {
    if (!property) {
        property.reset(IORegistryEntrySearchCFProperty(ancestor.get(), kIOServicePlane, key,
                                                       kCFAllocatorDefault, kNoOptions));
    }
}

/// Collects the properties of a serial service, which stand on the USB device some levels above it.
/// The first ancestor with an identifier is that device; what it lacks is missing.
Properties propertiesOf(const RegistryObject& service) {
    constexpr int kLevels = 5;
    Properties found;
    found.calloutPath.reset(IORegistryEntryCreateCFProperty(service.get(), CFSTR("IOCalloutDevice"),
                                                            kCFAllocatorDefault, kNoOptions));
    RegistryObject ancestor = parentOf(service);
    for (int level = 0; level < kLevels && ancestor && !found.vendorId && !found.productId;
         ++level) {
        complete(found.productName, ancestor, CFSTR("Product Name"));
        complete(found.vendorId, ancestor, CFSTR("idVendor"));
        complete(found.productId, ancestor, CFSTR("idProduct"));
        complete(found.calloutPath, ancestor, CFSTR("IOCalloutDevice"));
        ancestor = parentOf(ancestor);
    }
    return found;
}

/// \return nothing when the property is missing, is no text or is too long
std::optional<std::string> textOf(const Property& property) {
    char text[1024] = "";
    if (!property || CFGetTypeID(property.get()) != CFStringGetTypeID() ||
        !CFStringGetCString(static_cast<CFStringRef>(property.get()), text, sizeof text,
                            kCFStringEncodingUTF8)) {
        return std::nullopt;
    }
    return text;
}

/// \return four uppercase digits; nothing when the property is missing or is no number
std::optional<std::string> identifierOf(const Property& property) {
    if (!property || CFGetTypeID(property.get()) != CFNumberGetTypeID()) {
        return std::nullopt;
    }
    std::int32_t value = 0;
    // False only says that the number is wider than this; what fits of it is there all the same.
    (void)CFNumberGetValue(static_cast<CFNumberRef>(property.get()), kCFNumberSInt32Type, &value);
    char digits[2 * sizeof value + 1];
    (void)std::snprintf(digits, sizeof digits, "%04X", static_cast<unsigned int>(value));
    return std::string(digits);
}

/// The path of an entry; empty when it has none, which stops no load.
std::string pathOf(const RegistryObject& entry) {
    io_string_t path = "";
    const bool known = IORegistryEntryGetPath(entry.get(), kIOServicePlane, path) == KERN_SUCCESS;
    return known ? path : "";
}

} // namespace

bool VEXADeviceManager::findDevices(std::vector<VEXADevice>& out) {
    const FunctionTrace trace("VEXADeviceManager::findDevices");
    CFMutableDictionaryRef matching = IOServiceMatching("IOSerialBSDClient");
    if (matching == nullptr) {
        VEXALog(kLogInfo, "No AppleUSBCDC device found");
        return false;
    }
    io_iterator_t iterator = IO_OBJECT_NULL;
    // Takes over the dictionary. No port stands for the default one, whose name has changed.
    if (IOServiceGetMatchingServices(MACH_PORT_NULL, matching, &iterator) != KERN_SUCCESS) {
        VEXALog(kLogError, "findPort : IOServiceGetMatchingServices failed");
        return false;
    }
    const RegistryObject services(iterator);
    // One record for all services: a service that cannot be read is listed with the values of the
    // one before it, and dropped by the filter when those do not match. This is intended.
    VEXADevice device;
    for (io_object_t service = IOIteratorNext(services.get()); service != IO_OBJECT_NULL;
         service = IOIteratorNext(services.get())) {
        (void)getDeviceInterfaceDetails(service, device);
        out.push_back(device);
    }
    return true;
}

bool VEXADeviceManager::getDeviceInterfaceDetails(unsigned int service, VEXADevice& out) {
    const FunctionTrace trace("VEXADeviceManager::getDeviceInterfaceDetails");
    const RegistryObject entry(service);
    const Properties properties = propertiesOf(entry);
    const std::string path = pathOf(entry);
    const std::optional<std::string> calloutPath = textOf(properties.calloutPath);
    if (!calloutPath) {
        VEXALog(kLogError, "bsdPathAsCFString not found");
        return false;
    }
    const std::optional<std::string> productName = textOf(properties.productName);
    if (!productName) {
        VEXALog(kLogError, "productNameAsCFString not found");
        return false;
    }
    const std::optional<std::string> vendorId = identifierOf(properties.vendorId);
    if (!vendorId) {
        VEXALog(kLogError, "vendorIdAsCFNumber not found");
        return false;
    }
    const std::optional<std::string> productId = identifierOf(properties.productId);
    if (!productId) {
        VEXALog(kLogError, "productIdAsCFNumber not found");
        return false;
    }
    out = VEXADevice(path, *calloutPath, *productName, *vendorId, *productId);
    return true;
}

// The half of the registry's stand-in that plays CoreFoundation.
#include "tests/support/io_registry.h"

#include <cstring>
#include <memory>

// The opaque types of the system.
struct Object {
    virtual ~Object() = default;
    std::size_t references = 1;
};
struct __CFString : Object {
    std::string text;
    bool broken = false;
};
struct __CFNumber : Object {
    io_registry::Number number{};
};
struct __CFDictionary : Object {
    std::string className;
};
struct DataObject : Object {};

const CFAllocatorRef kCFAllocatorDefault = nullptr;

namespace {

constexpr CFTypeID kStringType = 7;
constexpr CFTypeID kNumberType = 22;
constexpr CFTypeID kOtherType = 20;

// Released objects stay, so that a use of them is seen.
std::map<const void*, std::unique_ptr<Object>> objects;
std::map<std::string, std::unique_ptr<__CFString>> constants;

/// The object that a caller means, null and an error when there is none.
template<class Type> Type* use(CFTypeRef reference, const char* caller) {
    const auto found = objects.find(reference);
    if (found == objects.end() || found->second->references == 0) {
        io_registry::fail(std::string(caller) + " of an object that is not there");
        return nullptr;
    }
    auto* object = dynamic_cast<Type*>(found->second.get());
    if (object == nullptr) {
        io_registry::fail(std::string(caller) + " of an object of another type");
    }
    return object;
}

template<class Type> Type* keep(std::unique_ptr<Type> object) {
    Type* kept = object.get();
    objects[kept] = std::move(object);
    return kept;
}

CFTypeRef make(const std::string& text) {
    auto made = std::make_unique<__CFString>();
    made->text = text;
    return keep(std::move(made));
}

CFTypeRef make(io_registry::Number number) {
    auto made = std::make_unique<__CFNumber>();
    made->number = number;
    return keep(std::move(made));
}

CFTypeRef make(io_registry::BrokenText /*text*/) {
    auto made = std::make_unique<__CFString>();
    made->broken = true;
    return keep(std::move(made));
}

CFTypeRef make(io_registry::Data /*data*/) {
    return keep(std::make_unique<DataObject>());
}

/// Stores a number as an integer of some width.
template<class Integer> Boolean store(std::int64_t value, void* target) {
    const auto cut = static_cast<Integer>(value);
    std::memcpy(target, &cut, sizeof cut);
    return cut == value ? 1 : 0;
}

} // namespace

void CFRelease(CFTypeRef cf) {
    auto* object = use<Object>(cf, "CFRelease");
    if (object != nullptr) {
        --object->references;
    }
}

CFTypeID CFGetTypeID(CFTypeRef cf) {
    auto* object = use<Object>(cf, "CFGetTypeID");
    if (dynamic_cast<__CFString*>(object) != nullptr) {
        return kStringType;
    }
    return dynamic_cast<__CFNumber*>(object) != nullptr ? kNumberType : kOtherType;
}

CFTypeID CFStringGetTypeID() {
    return kStringType;
}

CFTypeID CFNumberGetTypeID() {
    return kNumberType;
}

Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
    const auto* string = use<__CFString>(theString, "CFStringGetCString");
    if (encoding != kCFStringEncodingUTF8) {
        io_registry::fail("CFStringGetCString for another encoding");
        return 0;
    }
    const bool fits = string != nullptr && !string->broken &&
                      static_cast<CFIndex>(string->text.size()) < bufferSize;
    if (!fits) {
        std::memset(buffer, 'x', static_cast<std::size_t>(bufferSize)); // not even terminated
        return 0;
    }
    std::memcpy(buffer, string->text.c_str(), string->text.size() + 1);
    return 1;
}

CFStringRef __CFStringMakeConstantString(const char* cStr) {
    auto& constant = constants[cStr];
    if (!constant) {
        constant = std::make_unique<__CFString>();
        constant->text = cStr;
    }
    return constant.get();
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr) {
    const auto* object = use<__CFNumber>(number, "CFNumberGetValue");
    if (object == nullptr) {
        return 0;
    }
    switch (theType) {
    case kCFNumberSInt8Type:
        return store<std::int8_t>(object->number.value, valuePtr);
    case kCFNumberSInt16Type:
        return store<std::int16_t>(object->number.value, valuePtr);
    case kCFNumberSInt32Type:
        return store<std::int32_t>(object->number.value, valuePtr);
    case kCFNumberSInt64Type:
        return store<std::int64_t>(object->number.value, valuePtr);
    }
    return 0;
}

namespace io_registry {

CFTypeRef makeProperty(const Value& value) {
    return std::visit([](const auto& kept) { return make(kept); }, value);
}

CFMutableDictionaryRef makeDictionary(const std::string& className) {
    auto made = std::make_unique<__CFDictionary>();
    made->className = className;
    return keep(std::move(made));
}

std::string classOf(CFDictionaryRef dictionary) {
    const auto* object = use<__CFDictionary>(dictionary, "IOServiceGetMatchingServices");
    return object == nullptr ? std::string() : object->className;
}

std::string textOf(CFStringRef constant) {
    return constant->text;
}

std::size_t heldProperties() {
    std::size_t held = 0;
    for (const auto& object : objects) {
        held += object.second->references;
    }
    return held;
}

void resetProperties() {
    objects.clear();
}

} // namespace io_registry

// The half of the registry's stand-in that plays IOKit: the tree, and the objects of its entries.
#include "tests/support/io_registry.h"

#include <cstring>

namespace io_registry {

bool matchingFails = false;
kern_return_t searchResult = KERN_SUCCESS;

namespace {

struct Node {
    Entry parent = kNoParent;
    std::string className;
    Properties properties;
};

constexpr kern_return_t kNotThere = -536870208; // kIOReturnNoDevice
constexpr kern_return_t kBadArgument = -536870206;
constexpr Entry kFirstIterator = 0x10000;
const std::string kPlane = "IOService";

std::map<Entry, Node> tree;
std::map<io_iterator_t, std::vector<Entry>> iterators; // what is still to come, the last first
std::map<io_object_t, std::size_t> references;
std::vector<std::string> noted;

/// True for an object that somebody holds; else an error.
bool isHeld(io_object_t object, const char* caller) {
    const auto found = references.find(object);
    const bool held = found != references.end() && found->second > 0;
    if (!held) {
        fail(std::string(caller) + " of an object that is not there");
    }
    return held;
}

/// The entry that an object stands for, null and an error when there is none.
const Node* use(io_object_t object, const char* plane, const char* caller) {
    if (plane != kPlane) {
        fail(std::string(caller) + " in the plane " + plane);
    }
    const bool held = isHeld(object, caller);
    const auto node = tree.find(object);
    return held && node != tree.end() ? &node->second : nullptr;
}

CFTypeRef copyProperty(const Node* node, CFStringRef key, IOOptionBits options) {
    if (options != 0) {
        fail("a search beyond the entry");
    }
    const auto property =
        node == nullptr ? Properties::const_iterator() : node->properties.find(textOf(key));
    const bool found = node != nullptr && property != node->properties.end();
    return found ? makeProperty(property->second) : nullptr;
}

} // namespace

Entry add(Entry parent, const std::string& className, const Properties& properties) {
    const Entry entry = static_cast<Entry>(tree.size()) * 4 + 3; // like the numbers of ports
    tree[entry] = {parent, className, properties};
    return entry;
}

io_object_t reference(Entry entry) {
    ++references[entry];
    return entry;
}

std::size_t heldReferences() {
    std::size_t held = heldProperties();
    for (const auto& object : references) {
        held += object.second;
    }
    return held;
}

const std::vector<std::string>& errors() {
    return noted;
}

void fail(const std::string& what) {
    noted.push_back(what);
}

void reset() {
    matchingFails = false;
    searchResult = KERN_SUCCESS;
    tree.clear();
    iterators.clear();
    references.clear();
    noted.clear();
    resetProperties();
}

} // namespace io_registry

using namespace io_registry;

CFMutableDictionaryRef IOServiceMatching(const char* name) {
    return matchingFails ? nullptr : makeDictionary(name);
}

kern_return_t IOServiceGetMatchingServices(mach_port_t masterPort, CFDictionaryRef matching,
                                           io_iterator_t* existing) {
    const std::string wanted = classOf(matching);
    CFRelease(matching);
    if (masterPort != MACH_PORT_NULL) {
        fail("a search at another port");
    }
    if (searchResult != KERN_SUCCESS) {
        return searchResult;
    }
    const io_iterator_t iterator = kFirstIterator + static_cast<io_iterator_t>(iterators.size());
    std::vector<Entry>& matches = iterators[iterator];
    for (const auto& node : tree) {
        if (node.second.className == wanted) {
            matches.insert(matches.begin(), node.first);
        }
    }
    *existing = io_registry::reference(iterator);
    return KERN_SUCCESS;
}

io_object_t IOIteratorNext(io_iterator_t iterator) {
    if (!isHeld(iterator, "IOIteratorNext") || iterators[iterator].empty()) {
        return IO_OBJECT_NULL;
    }
    const Entry next = iterators[iterator].back();
    iterators[iterator].pop_back();
    return io_registry::reference(next);
}

kern_return_t IOObjectRelease(io_object_t object) {
    if (!isHeld(object, "IOObjectRelease")) {
        return kBadArgument;
    }
    --references[object];
    return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t entry, const io_name_t plane,
                                            io_registry_entry_t* parent) {
    const Node* node = use(entry, plane, "IORegistryEntryGetParentEntry");
    if (node == nullptr || node->parent == kNoParent) {
        *parent = 0xDEAD; // whatever stands there means nothing
        return kNotThere;
    }
    *parent = io_registry::reference(node->parent);
    return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetPath(io_registry_entry_t entry, const io_name_t plane,
                                     io_string_t path) {
    std::string whole;
    for (const Node* node = use(entry, plane, "IORegistryEntryGetPath"); node != nullptr;
         node = node->parent == kNoParent ? nullptr : &tree[node->parent]) {
        whole = "/" + node->className + whole;
    }
    whole = kPlane + ":" + whole;
    if (whole.size() >= sizeof(io_string_t)) {
        std::memset(path, 'x', sizeof(io_string_t));
        return kBadArgument;
    }
    std::memcpy(path, whole.c_str(), whole.size() + 1);
    return KERN_SUCCESS;
}

CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key,
                                          CFAllocatorRef /*allocator*/, IOOptionBits options) {
    return copyProperty(use(entry, kIOServicePlane, "IORegistryEntryCreateCFProperty"), key,
                        options);
}

CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const io_name_t plane,
                                          CFStringRef key, CFAllocatorRef /*allocator*/,
                                          IOOptionBits options) {
    return copyProperty(use(entry, plane, "IORegistryEntrySearchCFProperty"), key, options);
}

// The calls of IOKit that the product uses, declared as on macOS. io_registry.h says what stands
// behind them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitKeys.h>

#include <cstdint>

using kern_return_t = int;
using mach_port_t = unsigned int;
using io_object_t = mach_port_t;
using io_iterator_t = io_object_t;
using io_service_t = io_object_t;
using io_registry_entry_t = io_object_t;
using io_name_t = char[128];
using io_string_t = char[512];
using IOOptionBits = std::uint32_t;

#define KERN_SUCCESS 0
#define MACH_PORT_NULL 0
#define IO_OBJECT_NULL (static_cast<io_object_t>(0))

extern "C" {

/// A dictionary that is the caller's, null on failure.
CFMutableDictionaryRef IOServiceMatching(const char* name);
/// Takes one reference to the dictionary, also on failure. The iterator is the caller's.
kern_return_t IOServiceGetMatchingServices(mach_port_t masterPort, CFDictionaryRef matching,
                                           io_iterator_t* existing);
/// The next object, which is the caller's; null at the end.
io_object_t IOIteratorNext(io_iterator_t iterator);
/// Gives one reference back.
kern_return_t IOObjectRelease(io_object_t object);

/// The parent is the caller's.
kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t entry, const io_name_t plane,
                                            io_registry_entry_t* parent);
/// Fails when the path with its terminator does not fit.
kern_return_t IORegistryEntryGetPath(io_registry_entry_t entry, const io_name_t plane,
                                     io_string_t path);
/// A property of the entry, which is the caller's; null when there is none.
CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key,
                                          CFAllocatorRef allocator, IOOptionBits options);
/// Likewise; options may ask for the relatives of the entry as well.
CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const io_name_t plane,
                                          CFStringRef key, CFAllocatorRef allocator,
                                          IOOptionBits options);
}

// The calls of CoreFoundation that the product uses, declared as on macOS. io_registry.h says what
// stands behind them.
#pragma once

#include <cstdint>

using Boolean = unsigned char;
using CFIndex = long;
using CFTypeID = unsigned long;
using CFStringEncoding = std::uint32_t;
using CFTypeRef = const void*;
using CFAllocatorRef = const struct __CFAllocator*;
using CFStringRef = const struct __CFString*;
using CFNumberRef = const struct __CFNumber*;
using CFDictionaryRef = const struct __CFDictionary*;
using CFMutableDictionaryRef = struct __CFDictionary*;

enum CFNumberType : CFIndex {
    kCFNumberSInt8Type = 1,
    kCFNumberSInt16Type = 2,
    kCFNumberSInt32Type = 3,
    kCFNumberSInt64Type = 4,
};
constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x08000100;

extern "C" {

extern const CFAllocatorRef kCFAllocatorDefault;

/// Gives one reference back; a null one is an error.
void CFRelease(CFTypeRef cf);
CFTypeID CFGetTypeID(CFTypeRef cf);

CFTypeID CFStringGetTypeID();
/// False when the text with its terminator does not fit or has no such encoding.
Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding);
CFStringRef __CFStringMakeConstantString(const char* cStr);

CFTypeID CFNumberGetTypeID();
/// Stores the number in the width asked for; false when it had to be cut.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr);
}

/// A constant text: nobody owns it.
#define CFSTR(cStr) __CFStringMakeConstantString("" cStr "")

// Stands in for the I/O registry of macOS: a tree of entries that the test describes, behind the
// calls of IOKit and CoreFoundation that tests/support/macos declares.
//
// Every reference is counted. What a program on macOS would get away with, or crash by, is kept as
// an error: a release too many, use after the release, an object of another type.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

#include <map>
#include <string>
#include <variant>
#include <vector>

namespace io_registry {

/// A number and the width in which the registry keeps it.
struct Number {
    std::int64_t value;
    CFNumberType width = kCFNumberSInt32Type;
};
/// A text that cannot be encoded.
struct BrokenText {};
/// A property that is neither text nor number.
struct Data {};
using Value = std::variant<std::string, Number, BrokenText, Data>;
using Properties = std::map<std::string, Value>;

/// An entry of the tree. An object of it carries the same number.
using Entry = io_object_t;
constexpr Entry kNoParent = IO_OBJECT_NULL;

/// Adds an entry below another; its class is its name in the path too.
Entry add(Entry parent, const std::string& className, const Properties& properties = {});

/// An object of the entry, to be handed to the code under test.
io_object_t reference(Entry entry);

/// Lets the calls fail.
extern bool matchingFails;
extern kern_return_t searchResult;

/// The references that have been given and not been released.
std::size_t heldReferences();
/// What was done against the rules of the system's calls.
const std::vector<std::string>& errors();
/// Notes an error.
void fail(const std::string& what);

/// Forgets the tree, the references and the errors.
void reset();

// Between the two halves of the stand-in.

/// A new object, of which the caller gets the only reference.
CFTypeRef makeProperty(const Value& value);
CFMutableDictionaryRef makeDictionary(const std::string& className);
/// The class that a dictionary asks for.
std::string classOf(CFDictionaryRef dictionary);
/// The text of a constant.
std::string textOf(CFStringRef constant);
/// The references to objects of CoreFoundation.
std::size_t heldProperties();
void resetProperties();

} // namespace io_registry

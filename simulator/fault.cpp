#include "simulator/fault.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace simulator {

const char* const kFaultHelp =
    "  A fault is STEP[:BLOCK]:KIND[=VALUE], for instance data:2:nack=41 or end:late=500. Several\n"
    "  at one frame work in their order.\n"
    "  STEP   init, request, data (BLOCK: the block counted from 1), end\n"
    "  KIND   silence        no answer\n"
    "         wrong          the last byte of the answer differs (data: 15 in its place); the\n"
    "                        terminal does not do what the frame asks for\n"
    "         short=N        only the first N bytes of the answer\n"
    "         long=N         N further bytes behind the answer\n"
    "         split=MS       the first byte, a pause of MS milliseconds, then the rest\n"
    "         late=MS        the answer after MS milliseconds\n"
    "         bytes=HEX      these bytes in the place of the answer; unless they accept the "
    "frame,\n"
    "                        the terminal does not do what it asks for\n"
    "         byte=XX        the same with one byte\n"
    "         nack=XX        a refusal with this reason: 06 00 00 XX\n"
    "         incomplete-nack  a refusal that breaks off: 06 00\n"
    "         pull           the cable is pulled before the terminal does anything\n";

namespace {

constexpr std::uint8_t kRefusal = 0x06;
constexpr unsigned long kMostBytes = 1048576;
constexpr unsigned long kLongestTime = 3600000; // milliseconds

struct KindName {
    const char* name;
    FaultKind kind;
    enum class Value { none, count, time, byte, bytes } value;
};

constexpr KindName kKinds[] = {
    {"silence", FaultKind::silence, KindName::Value::none},
    {"wrong", FaultKind::wrong, KindName::Value::none},
    {"short", FaultKind::cut, KindName::Value::count},
    {"long", FaultKind::longer, KindName::Value::count},
    {"split", FaultKind::split, KindName::Value::time},
    {"late", FaultKind::late, KindName::Value::time},
    {"bytes", FaultKind::replace, KindName::Value::bytes},
    {"byte", FaultKind::replace, KindName::Value::byte},
    {"nack", FaultKind::replace, KindName::Value::byte},
    {"incomplete-nack", FaultKind::replace, KindName::Value::none},
    {"pull", FaultKind::pull, KindName::Value::none},
};

std::optional<Step> parseStep(const std::string& text) {
    constexpr std::pair<const char*, Step> kSteps[] = {
        {"init", Step::init}, {"request", Step::request}, {"data", Step::data}, {"end", Step::end}};
    for (const auto& [name, step] : kSteps) {
        if (text == name) {
            return step;
        }
    }
    return std::nullopt;
}

/// Takes the next word off a text, up to a separator, which goes too.
std::string takeWord(std::string& text, char separator) {
    const std::size_t end = text.find(separator);
    const std::string word = text.substr(0, end);
    text.erase(0, end == std::string::npos ? end : end + 1);
    return word;
}

/// \return false when the value does not suit the kind
bool applyValue(const KindName& kind, const std::string& value, Fault& fault) {
    const std::optional<unsigned long> number = parseNumber(value);
    const std::optional<Bytes> bytes = parseBytes(value);
    switch (kind.value) {
    case KindName::Value::none:
        return value.empty();
    case KindName::Value::count:
        fault.count = number.value_or(0);
        return number.has_value() && fault.count <= kMostBytes;
    case KindName::Value::time:
        fault.time = std::chrono::milliseconds(std::min(number.value_or(0), kLongestTime));
        return number.value_or(kLongestTime + 1) <= kLongestTime;
    case KindName::Value::byte:
    case KindName::Value::bytes:
        fault.bytes = bytes.value_or(Bytes());
        return !fault.bytes.empty() &&
               (kind.value == KindName::Value::bytes || fault.bytes.size() == 1);
    }
    return false;
}

} // namespace

bool Fault::refuses(const Bytes& acceptance) const {
    return kind == FaultKind::wrong || kind == FaultKind::pull ||
           (kind == FaultKind::replace && bytes != acceptance);
}

std::optional<Fault> parseFault(const std::string& text, std::string& error) {
    std::string rest = text;
    Fault fault;
    fault.text = text;
    const std::optional<Step> step = parseStep(takeWord(rest, ':'));
    if (!step) {
        error = "fault \"" + text + "\": the step must be init, request, data or end";
        return std::nullopt;
    }
    fault.step = *step;
    if (fault.step == Step::data) {
        const std::optional<unsigned long> block = parseNumber(takeWord(rest, ':'));
        if (!block || *block == 0) {
            error = "fault \"" + text + "\": data needs a block counted from 1";
            return std::nullopt;
        }
        fault.block = *block;
    }
    const std::string name = takeWord(rest, '=');
    const auto* kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                    [&](const KindName& known) { return name == known.name; });
    if (kind == std::end(kKinds) || !applyValue(*kind, rest, fault)) {
        error = "fault \"" + text + "\": kind \"" + name + "\" is unknown or its value is wrong";
        return std::nullopt;
    }
    fault.kind = kind->kind;
    if (name == "nack") {
        fault.bytes = {kRefusal, 0x00, 0x00, fault.bytes[0]};
    } else if (name == "incomplete-nack") {
        fault.bytes = {kRefusal, 0x00};
    }
    return fault;
}

std::vector<Fault> faultsOf(const std::vector<Fault>& faults, Step step, std::size_t block) {
    std::vector<Fault> found;
    std::copy_if(faults.begin(), faults.end(), std::back_inserter(found), [&](const Fault& fault) {
        return fault.step == step && (step != Step::data || fault.block == block);
    });
    return found;
}

} // namespace simulator

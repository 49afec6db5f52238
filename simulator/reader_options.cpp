#include "simulator/reader_options.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace simulator {

namespace {

constexpr char kHelpHead[] =
    "Usage: vexa-reader [OPTION]... -- COMMAND [ARGUMENT]...\n"
    "\n"
    "Runs COMMAND on a system with a PC/SC daemon of its own, to which simulated terminals are\n"
    "connected as readers. Neither the system's daemon nor its readers are seen or disturbed. "
    "Ends\n"
    "with the exit status of COMMAND.\n"
    "\n"
    "  --store DIR        keep the databases here, as DIR/reader0/pad-02.db and so on\n"
    "                     (default: terminal-store)\n"
    "  --no-daemon        run no PC/SC daemon\n"
    "  --daemon-log FILE  what the daemon has to say\n"
    "  --trace FILE       say what happens, and why something is refused\n"
    "  --frames FILE      write down every frame (>) and every answer (<) in hexadecimal\n"
    "  --exchanges FILE   write down every escape exchange: reader, control code, capacity that\n"
    "                     the daemon gives, bytes sent (>) and answered (<)\n"
    "  --times FILE       write down when each escape exchange began and ended, in seconds\n"
    "  --help             this text\n"
    "\n"
    "  --reader NAME      connect a reader of this name; may be repeated, and what follows is "
    "about\n"
    "                     the last one (without any: one reader, Halvorin Terminal). The daemon\n"
    "                     appends two numbers. No readers at all: --readers 0\n"
    "  --readers N        connect N more like the last one\n"
    "  --vendor NAME      its vendor (default: Halvorin); an empty one: it names none\n"
    "  --serial NUMBER    its serial number (default: VT-0001); an empty one: it has none\n"
    "  --slots N          the number of its slots (default: 1)\n"
    "  --features HEX     its feature list (default: 130442330001); none: the question is refused\n"
    "  --escape-code HEX  the control code of its escapes (default: 42000000)\n"
    "  --rate N           N bytes a second pass between it and the host, both ways together\n"
    "  --held yes         another program holds it for itself\n"
    "  --fault FAULT      its terminal shows a fault, see below; may be repeated\n"
    "  --escape N:FAULT   the N-th escape exchange goes wrong: fail (it is refused), bytes=HEX "
    "(all\n"
    "                     that is answered), remove (the reader goes away), kill-daemon\n"
    "\n";

constexpr unsigned long kMostReaders = 100;
constexpr unsigned long kMostSlots = 8;
constexpr std::size_t kCodeSize = 4;

ReaderDescription usualReader() {
    ReaderDescription reader;
    reader.name = "Halvorin Terminal";
    reader.vendor = "Halvorin";
    reader.serial = "VT-0001";
    reader.features = Bytes{0x13, 0x04, 0x42, 0x33, 0x00, 0x01};
    reader.escapeCode = 0x42000000;
    return reader;
}

std::optional<std::uint32_t> parseCode(const std::string& text) {
    const std::optional<Bytes> bytes = parseBytes(text);
    if (!bytes || bytes->size() != kCodeSize) {
        return std::nullopt;
    }
    constexpr unsigned int kByte = 8;
    std::uint32_t code = 0;
    for (const std::uint8_t byte : *bytes) {
        code = (code << kByte) | byte;
    }
    return code;
}

std::optional<EscapeFault> parseEscapeFault(const std::string& text) {
    const std::size_t colon = text.find(':');
    const std::optional<unsigned long> exchange = parseNumber(text.substr(0, colon));
    if (colon == std::string::npos || !exchange || *exchange == 0) {
        return std::nullopt;
    }
    const std::string rest = text.substr(colon + 1);
    const std::string bytesWord = "bytes=";
    EscapeFault fault;
    fault.exchange = *exchange;
    if (rest.rfind(bytesWord, 0) == 0) {
        const std::string hex = rest.substr(bytesWord.size());
        const std::optional<Bytes> bytes = hex.empty() ? Bytes() : parseBytes(hex);
        fault.kind = EscapeFault::Kind::bytes;
        fault.bytes = bytes.value_or(Bytes());
        return bytes ? std::optional<EscapeFault>(fault) : std::nullopt;
    }
    const std::pair<const char*, EscapeFault::Kind> kinds[] = {
        {"fail", EscapeFault::Kind::fail},
        {"remove", EscapeFault::Kind::remove},
        {"kill-daemon", EscapeFault::Kind::killDaemon},
    };
    const auto* kind = std::find_if(std::begin(kinds), std::end(kinds),
                                    [&](const auto& known) { return rest == known.first; });
    fault.kind = kind == std::end(kinds) ? EscapeFault::Kind::fail : kind->second;
    return kind == std::end(kinds) ? std::nullopt : std::optional<EscapeFault>(fault);
}

/// An empty word stands for a missing attribute.
std::optional<std::string> attribute(const std::string& word) {
    return word.empty() ? std::optional<std::string>() : word;
}

class Parser {
public:
    Parser(const std::vector<std::string>& arguments, std::string& error)
        : m_arguments(arguments), m_error(error) {}

    std::optional<ReaderOptions> parse() {
        for (m_next = 0; m_next < m_arguments.size(); ++m_next) {
            const std::string& word = m_arguments[m_next];
            if (word == "--") {
                const auto command = m_arguments.begin() + static_cast<std::ptrdiff_t>(m_next);
                m_options.command.assign(command + 1, m_arguments.end());
                break;
            }
            if (word == "--help") {
                m_options.help = true;
                return m_options;
            }
            if (word == "--no-daemon") {
                m_options.daemon = false;
            } else if (!parseOption(word)) {
                return std::nullopt;
            }
        }
        if (m_options.command.empty()) {
            m_error = "no command is given";
            return std::nullopt;
        }
        if (!m_counted) {
            (void)lastReader();
        }
        return m_options;
    }

private:
    ReaderDescription& lastReader() {
        if (m_options.readers.empty()) {
            m_options.readers.push_back(usualReader());
        }
        return m_options.readers.back();
    }

    bool parseOption(const std::string& word) {
        if (m_next + 1 == m_arguments.size()) {
            m_error = "unknown option, or its value is missing: " + word;
            return false;
        }
        const std::string& value = m_arguments[++m_next];
        if (value.find_first_of("\n\"") != std::string::npos ||
            !(storeText(word, value) || storeOfReader(word, value))) {
            m_error = m_error.empty() ? "wrong: " + word + " " + value : m_error;
            return false;
        }
        return true;
    }

    bool storeText(const std::string& word, const std::string& value) {
        const std::pair<const char*, std::string*> texts[] = {
            {"--store", &m_options.storeFolder}, {"--trace", &m_options.traceFile},
            {"--frames", &m_options.frameFile},  {"--exchanges", &m_options.exchangeFile},
            {"--times", &m_options.timeFile},    {"--daemon-log", &m_options.daemonLog},
        };
        for (const auto& [name, text] : texts) {
            if (word == name) {
                *text = value;
                return true;
            }
        }
        if (word == "--reader") {
            m_options.readers.push_back(usualReader());
            m_options.readers.back().name = value;
            return !value.empty();
        }
        return word == "--readers" && addReaders(parseNumber(value));
    }

    /// Further readers like the last one; 0 without any before asks for none at all.
    bool addReaders(std::optional<unsigned long> count) {
        if (!count || *count > kMostReaders) {
            return false;
        }
        m_counted = true;
        const ReaderDescription reader =
            m_options.readers.empty() ? usualReader() : m_options.readers.back();
        m_options.readers.insert(m_options.readers.end(), *count, reader);
        return true;
    }

    bool storeOfReader(const std::string& word, const std::string& value) {
        ReaderDescription& reader = lastReader();
        if (word == "--vendor") {
            reader.vendor = attribute(value);
            return true;
        }
        if (word == "--serial") {
            reader.serial = attribute(value);
            return true;
        }
        if (word == "--features") {
            reader.features =
                value == "none" ? std::optional<Bytes>() : parseBytes(value).value_or(Bytes());
            return value.empty() || value == "none" || parseBytes(value).has_value();
        }
        if (word == "--escape-code") {
            reader.escapeCode = parseCode(value).value_or(0);
            return parseCode(value).has_value();
        }
        if (word == "--slots") {
            reader.slotCount = parseNumber(value).value_or(0);
            return reader.slotCount > 0 && reader.slotCount <= kMostSlots;
        }
        if (word == "--rate") {
            reader.bytesPerSecond = parseNumber(value).value_or(0);
            return reader.bytesPerSecond != 0;
        }
        if (word == "--held") {
            reader.held = true;
            return value == "yes";
        }
        return storeFault(word, value, reader);
    }

    bool storeFault(const std::string& word, const std::string& value, ReaderDescription& reader) {
        if (word == "--fault") {
            const std::optional<Fault> fault = parseFault(value, m_error);
            reader.faults.insert(reader.faults.end(), fault.has_value() ? 1 : 0,
                                 fault.value_or(Fault()));
            return fault.has_value();
        }
        const std::optional<EscapeFault> fault =
            word == "--escape" ? parseEscapeFault(value) : std::nullopt;
        reader.escapeFaults.insert(reader.escapeFaults.end(), fault.has_value() ? 1 : 0,
                                   fault.value_or(EscapeFault()));
        return fault.has_value();
    }

    const std::vector<std::string>& m_arguments;
    std::string& m_error;
    ReaderOptions m_options;
    bool m_counted = false;
    std::size_t m_next = 0;
};

} // namespace

std::optional<ReaderOptions> parseReaderOptions(const std::vector<std::string>& arguments,
                                                std::string& error) {
    return Parser(arguments, error).parse();
}

std::string readerHelpText() {
    return std::string(kHelpHead) + kFaultHelp;
}

} // namespace simulator

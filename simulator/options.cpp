#include "simulator/options.h"

#include <utility>

namespace simulator {

namespace {

constexpr char kHelpHead[] =
    "Usage: vexa-terminal [OPTION]... -- COMMAND [ARGUMENT]...\n"
    "\n"
    "Runs COMMAND on a system into which simulated terminals are plugged as USB serial devices:\n"
    "/dev/ttyACM0 and so on. They answer as the real ones do and are strict about every byte.\n"
    "Ends with the exit status of COMMAND.\n"
    "\n"
    "  --store DIR        keep the databases here, as DIR/ttyACM0/pad-02.db and so on\n"
    "                     (default: terminal-store)\n"
    "  --devices N        plug in N terminals (default: 1)\n"
    "  --vendor-id XXXX   their USB vendor ID (default: " VEXA_VENDOR_ID ")\n"
    "  --product-id XXXX  their USB product ID (default: 0012)\n"
    "  --product NAME     their product name (default: VEXA T1 - Simulated terminal)\n"
    "  --device V:P:NAME  plug in one more, with these identifiers and this name; an empty one is\n"
    "                     left out of its description\n"
    "  --further FILE     plug in further devices, described in umockdev's format\n"
    "  --rate N           take N bytes a second from the host; 500k and 1.2M are understood\n"
    "  --fault FAULT      show a fault, see below; may be repeated\n"
    "  --trace FILE       say what happens, and why something is refused (- for standard error)\n"
    "  --frames FILE      write down every frame (>) and every answer (<) in hexadecimal\n"
    "  --times FILE       write down how long the data phase of each load took\n"
    "  --help             this text\n"
    "\n";

constexpr unsigned long kMostDevices = 100;

std::optional<unsigned long> parseRate(const std::string& text) {
    std::string number = text;
    double unit = 1;
    if (!number.empty() && (number.back() == 'k' || number.back() == 'M')) {
        unit = number.back() == 'k' ? 1e3 : 1e6;
        number.pop_back();
    }
    std::size_t used = 0;
    double value = 0;
    try {
        value = std::stod(number, &used);
    } catch (const std::exception&) {
        return std::nullopt;
    }
    constexpr double kFastest = 1e12;
    if (used != number.size() || !(value * unit >= 1) || value * unit > kFastest) {
        return std::nullopt;
    }
    return static_cast<unsigned long>(value * unit);
}

/// An empty word stands for a missing attribute.
std::optional<std::string> attribute(const std::string& word) {
    return word.empty() ? std::optional<std::string>() : word;
}

std::optional<UsbDevice> parseDevice(const std::string& text) {
    const std::size_t first = text.find(':');
    const std::size_t second = first == std::string::npos ? first : text.find(':', first + 1);
    if (second == std::string::npos) {
        return std::nullopt;
    }
    return UsbDevice{attribute(text.substr(0, first)),
                     attribute(text.substr(first + 1, second - first - 1)),
                     attribute(text.substr(second + 1))};
}

class Parser {
public:
    Parser(const std::vector<std::string>& arguments, std::string& error)
        : m_arguments(arguments), m_error(error) {}

    std::optional<Options> parse() {
        for (m_next = 0; m_next < m_arguments.size(); ++m_next) {
            const std::string& word = m_arguments[m_next];
            if (word == "--") {
                m_options.command.assign(m_arguments.begin() + static_cast<std::ptrdiff_t>(m_next) +
                                             1,
                                         m_arguments.end());
                break;
            }
            if (word == "--help") {
                m_options.help = true;
                return m_options;
            }
            if (!parseOption(word)) {
                return std::nullopt;
            }
        }
        if (m_options.command.empty()) {
            m_error = "no command is given";
            return std::nullopt;
        }
        m_options.devices.insert(m_options.devices.begin(), m_count, m_device);
        return m_options;
    }

private:
    bool parseOption(const std::string& word) {
        if (m_next + 1 == m_arguments.size()) {
            m_error = "unknown option, or its value is missing: " + word;
            return false;
        }
        const std::string& value = m_arguments[++m_next];
        if (!store(word, value)) {
            m_error = m_error.empty() ? "wrong: " + word + " " + value : m_error;
            return false;
        }
        return true;
    }

    bool store(const std::string& word, const std::string& value) {
        const std::pair<const char*, std::string*> texts[] = {
            {"--store", &m_options.storeFolder},      {"--trace", &m_options.traceFile},
            {"--frames", &m_options.frameFile},       {"--times", &m_options.timeFile},
            {"--further", &m_options.furtherDevices},
        };
        for (const auto& [name, text] : texts) {
            if (word == name) {
                *text = value;
                return true;
            }
        }
        const std::pair<const char*, std::optional<std::string>*> attributes[] = {
            {"--vendor-id", &m_device.vendorId},
            {"--product-id", &m_device.productId},
            {"--product", &m_device.product},
        };
        for (const auto& [name, text] : attributes) {
            if (word == name) {
                *text = attribute(value);
                return true;
            }
        }
        return storeOther(word, value);
    }

    bool storeOther(const std::string& word, const std::string& value) {
        if (word == "--devices") {
            m_count = parseNumber(value).value_or(kMostDevices + 1);
            return m_count <= kMostDevices;
        }
        if (word == "--device") {
            const std::optional<UsbDevice> device = parseDevice(value);
            if (!device) {
                return false;
            }
            m_options.devices.push_back(*device);
            return true;
        }
        if (word == "--rate") {
            m_options.bytesPerSecond = parseRate(value).value_or(0);
            return m_options.bytesPerSecond != 0;
        }
        if (word == "--fault") {
            const std::optional<Fault> fault = parseFault(value, m_error);
            if (!fault) {
                return false;
            }
            m_options.faults.push_back(*fault);
            return true;
        }
        return false;
    }

    const std::vector<std::string>& m_arguments;
    std::string& m_error;
    Options m_options;
    UsbDevice m_device{VEXA_VENDOR_ID, "0012", "VEXA T1 - Simulated terminal"};
    unsigned long m_count = 1;
    std::size_t m_next = 0;
};

} // namespace

std::optional<Options> parseOptions(const std::vector<std::string>& arguments, std::string& error) {
    return Parser(arguments, error).parse();
}

std::string helpText() {
    return std::string(kHelpHead) + kFaultHelp;
}

} // namespace simulator

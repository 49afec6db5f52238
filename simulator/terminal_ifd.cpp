// The driver by which a PC/SC daemon shows simulated terminals as readers.
//
// The device name of a reader is FILE:NUMBER: a file with the words of vexa-reader's command line,
// one on each line, and which of its readers this one is.
// The daemon calls from several threads; one mutex lets them in one after the other.

#include "simulator/simulated_reader.h"

#include <PCSC/reader.h>
#include <PCSC/wintypes.h>
extern "C" {
#include <PCSC/ifdhandler.h>
}

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>

namespace {

using namespace simulator;

constexpr unsigned int kSlotBits = 16;
constexpr unsigned char kMostReaders = 16;
const Bytes kCard = {0x3B, 0x00}; // the shortest answer to reset

/// All readers of this daemon.
class Readers {
public:
    explicit Readers(ReaderOptions options)
        : m_options(std::move(options)), m_log(m_options.exchangeFile, m_options.timeFile) {
        std::string error;
        (void)m_journal.open(m_options.traceFile, m_options.frameFile, "", error);
    }

    /// \return false when there is no such reader, or no longer
    bool open(DWORD lun, std::size_t number) {
        if (number >= m_options.readers.size()) {
            return false;
        }
        std::unique_ptr<SimulatedReader>& reader = m_readers[number];
        if (!reader) {
            reader = std::make_unique<SimulatedReader>("reader" + std::to_string(number),
                                                       m_options.readers[number],
                                                       m_options.storeFolder, m_journal, m_log);
        }
        m_numbers[lun >> kSlotBits] = number;
        return !reader->isGone();
    }

    SimulatedReader* at(DWORD lun) {
        const auto number = m_numbers.find(lun >> kSlotBits);
        return number == m_numbers.end() ? nullptr : m_readers[number->second].get();
    }

private:
    ReaderOptions m_options;
    Journal m_journal;
    ExchangeLog m_log;
    std::map<std::size_t, std::unique_ptr<SimulatedReader>> m_readers;
    std::map<DWORD, std::size_t> m_numbers; ///< by the daemon's number of the reader
};

std::mutex g_mutex;
std::unique_ptr<Readers> g_readers;

bool loadReaders(const std::string& file) {
    std::ifstream stream(file);
    std::vector<std::string> words;
    for (std::string word; std::getline(stream, word);) {
        words.push_back(word);
    }
    std::string error;
    const std::optional<ReaderOptions> options = parseReaderOptions(words, error);
    if (options) {
        g_readers = std::make_unique<Readers>(*options);
    }
    return options.has_value();
}

RESPONSECODE give(const Bytes& bytes, PDWORD length, PUCHAR value) {
    if (*length < bytes.size()) {
        return IFD_ERROR_INSUFFICIENT_BUFFER;
    }
    std::copy(bytes.begin(), bytes.end(), value);
    *length = static_cast<DWORD>(bytes.size());
    return IFD_SUCCESS;
}

RESPONSECODE giveText(const std::optional<std::string>& text, PDWORD length, PUCHAR value) {
    return text ? give(Bytes(text->begin(), text->end()), length, value) : IFD_ERROR_TAG;
}

RESPONSECODE codeOf(SimulatedReader::Result result) {
    switch (result) {
    case SimulatedReader::Result::done:
        return IFD_SUCCESS;
    case SimulatedReader::Result::refused:
        return IFD_COMMUNICATION_ERROR;
    case SimulatedReader::Result::tooLong:
        return IFD_ERROR_INSUFFICIENT_BUFFER;
    case SimulatedReader::Result::gone:
        break;
    }
    return IFD_NO_SUCH_DEVICE;
}

SimulatedReader* readerAt(DWORD lun) {
    return g_readers ? g_readers->at(lun) : nullptr;
}

} // namespace

extern "C" {

RESPONSECODE IFDHCreateChannelByName(DWORD lun, LPSTR deviceName) {
    const std::lock_guard<std::mutex> lock(g_mutex);
    const std::string name = deviceName;
    const std::size_t colon = name.rfind(':');
    if (colon == std::string::npos || (!g_readers && !loadReaders(name.substr(0, colon)))) {
        return IFD_NO_SUCH_DEVICE;
    }
    const std::optional<unsigned long> number = parseNumber(name.substr(colon + 1));
    return number && g_readers->open(lun, *number) ? IFD_SUCCESS : IFD_NO_SUCH_DEVICE;
}

RESPONSECODE IFDHCreateChannel(DWORD /*lun*/, DWORD /*channel*/) {
    return IFD_NO_SUCH_DEVICE; // our readers have names
}

RESPONSECODE IFDHCloseChannel(DWORD /*lun*/) {
    return IFD_SUCCESS;
}

RESPONSECODE IFDHGetCapabilities(DWORD lun, DWORD tag, PDWORD length, PUCHAR value) {
    const std::lock_guard<std::mutex> lock(g_mutex);
    const SimulatedReader* reader = readerAt(lun);
    if (tag == TAG_IFD_SIMULTANEOUS_ACCESS) {
        return give({kMostReaders}, length, value);
    }
    if (reader == nullptr || reader->isGone()) {
        return IFD_NO_SUCH_DEVICE;
    }
    switch (tag) {
    case TAG_IFD_SLOTS_NUMBER:
        return give({static_cast<std::uint8_t>(reader->description().slotCount)}, length, value);
    case TAG_IFD_ATR:
    case SCARD_ATTR_ATR_STRING:
        return give(reader->description().held ? kCard : Bytes(), length, value);
    case SCARD_ATTR_VENDOR_NAME:
        return giveText(reader->description().vendor, length, value);
    case SCARD_ATTR_VENDOR_IFD_SERIAL_NO:
        return giveText(reader->description().serial, length, value);
    default:
        return IFD_ERROR_TAG;
    }
}

RESPONSECODE IFDHSetCapabilities(DWORD /*lun*/, DWORD /*tag*/, DWORD /*length*/, PUCHAR /*value*/) {
    return IFD_NOT_SUPPORTED;
}

RESPONSECODE IFDHSetProtocolParameters(DWORD /*lun*/, DWORD /*protocol*/, UCHAR /*flags*/,
                                       UCHAR /*pts1*/, UCHAR /*pts2*/, UCHAR /*pts3*/) {
    return IFD_SUCCESS;
}

RESPONSECODE IFDHPowerICC(DWORD /*lun*/, DWORD action, PUCHAR atr, PDWORD atrLength) {
    if (action == IFD_POWER_DOWN) {
        *atrLength = 0;
        return IFD_SUCCESS;
    }
    return give(kCard, atrLength, atr);
}

RESPONSECODE IFDHTransmitToICC(DWORD /*lun*/, SCARD_IO_HEADER /*sendPci*/, PUCHAR /*txBuffer*/,
                               DWORD /*txLength*/, PUCHAR /*rxBuffer*/, PDWORD rxLength,
                               PSCARD_IO_HEADER /*recvPci*/) {
    *rxLength = 0;
    return IFD_COMMUNICATION_ERROR;
}

RESPONSECODE IFDHICCPresence(DWORD lun) {
    const std::lock_guard<std::mutex> lock(g_mutex);
    const SimulatedReader* reader = readerAt(lun);
    if (reader == nullptr || reader->isGone()) {
        return IFD_NO_SUCH_DEVICE;
    }
    return reader->description().held ? IFD_ICC_PRESENT : IFD_ICC_NOT_PRESENT;
}

RESPONSECODE IFDHControl(DWORD lun, DWORD code, PUCHAR txBuffer, DWORD txLength, PUCHAR rxBuffer,
                         DWORD rxLength, LPDWORD returned) {
    const std::lock_guard<std::mutex> lock(g_mutex);
    *returned = 0;
    SimulatedReader* reader = readerAt(lun);
    if (reader == nullptr || reader->isGone()) {
        return IFD_NO_SUCH_DEVICE;
    }
    Bytes bytes;
    if (code == CM_IOCTL_GET_FEATURE_REQUEST) {
        if (!reader->description().features) {
            return IFD_NOT_SUPPORTED;
        }
        bytes = *reader->description().features;
    } else {
        const auto result = reader->exchange(static_cast<std::uint32_t>(code),
                                             Bytes(txBuffer, txBuffer + txLength), rxLength, bytes);
        if (result != SimulatedReader::Result::done) {
            return codeOf(result);
        }
    }
    *returned = rxLength;
    const RESPONSECODE given = give(bytes, returned, rxBuffer);
    *returned = given == IFD_SUCCESS ? *returned : 0;
    return given;
}

} // extern "C"

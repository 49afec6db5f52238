// Enumeration of the terminals behind PC/SC readers. No failure stops it: a reader that cannot be
// asked is left out, and without a PC/SC service there are none.

#include "app/log.h"
#include "devices/device_manager.h"

#include <PCSC/winscard.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <strings.h>

namespace {

constexpr DWORD kVendorName = 0x10100;   // SCARD_ATTR_VENDOR_NAME
constexpr DWORD kSerialNumber = 0x10103; // SCARD_ATTR_VENDOR_IFD_SERIAL_NO
constexpr char kMaker[] = "Halvorin";

/// A text attribute of a reader. It keeps its content when the next question fails, which is
/// intended: a reader without a serial number has its vendor's name for one.
class Attribute {
public:
    /// \return the result of the question
    LONG ask(SCARDHANDLE card, DWORD attribute) {
        auto length = static_cast<DWORD>(m_buffer.size());
        const LONG result = SCardGetAttrib(
            card, attribute, reinterpret_cast<unsigned char*>(m_buffer.data()), &length);
        m_buffer[std::min<std::size_t>(length, m_buffer.size() - 1)] = '\0';
        return result;
    }
    const char* text() const { return m_buffer.data(); }

private:
    std::array<char, 256> m_buffer{};
};

class Context {
public:
    Context() { (void)SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &m_context); }
    ~Context() { (void)SCardReleaseContext(m_context); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    SCARDCONTEXT get() const { return m_context; }

private:
    SCARDCONTEXT m_context = 0;
};

/// A direct connection to a reader, without a card.
class Connection {
public:
    Connection(SCARDCONTEXT context, const char* reader) {
        DWORD protocol = 0;
        m_result = SCardConnect(context, reader, SCARD_SHARE_DIRECT, SCARD_PROTOCOL_T0, &m_card,
                                &protocol);
    }
    ~Connection() {
        if (m_result == SCARD_S_SUCCESS) {
            (void)SCardDisconnect(m_card, SCARD_LEAVE_CARD);
        }
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    LONG result() const { return m_result; }
    SCARDHANDLE card() const { return m_card; }

private:
    SCARDHANDLE m_card = 0;
    LONG m_result = 0;
};

/// The names of all readers, each terminated, with an empty one at the end.
std::vector<char> readerNames(SCARDCONTEXT context) {
    DWORD size = 0;
    (void)SCardListReaders(context, nullptr, nullptr, &size);
    std::vector<char> names(size + 2, '\0'); // ends with an empty name whatever comes
    if (size > 0) {
        (void)SCardListReaders(context, nullptr, names.data(), &size);
    }
    return names;
}

std::string shownName(const std::string& reader, const std::string& serial) {
    if (reader.find(serial) != std::string::npos) {
        return reader;
    }
    VEXALog(kLogInfo, "findAllPCSCDevices : serial number not in PCSC name");
    return reader + " (" + serial + ")";
}

bool isOfMaker(const Connection& connection, Attribute& attribute) {
    const LONG result = attribute.ask(connection.card(), kVendorName);
    if (result != SCARD_S_SUCCESS) {
        VEXALog(kLogInfo, "findAllPCSCDevices cannot get SCARD_ATTR_VENDOR_NAME Error : 0x%x\n",
                static_cast<unsigned int>(result));
        return false;
    }
    if (strcasecmp(attribute.text(), kMaker) != 0) {
        VEXALog(kLogInfo, "findAllPCSCDevices : Not an Halvorin reader");
        return false;
    }
    return true;
}

} // namespace

void VEXADeviceManager::findAllPCSCDevices() {
    const FunctionTrace trace("VEXADeviceManager::findAllPCSCDevices");
    const Context context;
    const std::vector<char> names = readerNames(context.get());
    Attribute attribute;
    std::string lastSerial;
    for (const char* name = names.data(); *name != '\0'; name += std::strlen(name) + 1) {
        VEXALog(kLogInfo, "findAllPCSCDevices : Try reader %s", name);
        const Connection connection(context.get(), name);
        if (connection.result() != SCARD_S_SUCCESS) {
            VEXALog(kLogInfo, "findAllPCSCDevices SCardConnect failed Error : 0x%x\n",
                    static_cast<unsigned int>(connection.result()));
            continue;
        }
        if (!isOfMaker(connection, attribute)) {
            continue;
        }
        (void)attribute.ask(connection.card(), kSerialNumber);
        // The slots of one terminal follow each other; the first stands for all.
        if (lastSerial == attribute.text()) {
            VEXALog(kLogInfo, "Another Slot of the same reader, continue...");
            continue;
        }
        lastSerial = attribute.text();
        const std::string shown = shownName(name, lastSerial);
        VEXALog(kLogInfo, "found reader : %s", shown.c_str());
        deviceList.emplace_back(name, kPcscPortName, shown, "", "");
    }
}

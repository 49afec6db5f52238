#include "tests/support/scripted_pcsc.h"

#include <algorithm>
#include <cstring>

namespace scripted_pcsc {

std::vector<Reader> readers;
LONG establishing = SCARD_S_SUCCESS;
LONG listing = SCARD_S_SUCCESS;
bool terminatesList = true;
std::vector<Control> controls;
std::vector<Answer> answers;
std::vector<std::string> calls;

void reset() {
    readers.clear();
    establishing = listing = SCARD_S_SUCCESS;
    terminatesList = true;
    controls.clear();
    answers.clear();
    calls.clear();
}

namespace {

// Wider than 32 bits, where the type is.
constexpr auto kContext = static_cast<SCARDCONTEXT>(0x7000000012345678);
constexpr auto kFirstCard = static_cast<SCARDHANDLE>(0x6000000000000100);

std::string number(DWORD value) {
    return std::to_string(value);
}

} // namespace
} // namespace scripted_pcsc

using namespace scripted_pcsc;

extern "C" {

LONG SCardEstablishContext(DWORD scope, LPCVOID /*reserved1*/, LPCVOID /*reserved2*/,
                           LPSCARDCONTEXT context) {
    calls.push_back("establish scope " + number(scope));
    if (establishing == SCARD_S_SUCCESS) {
        *context = kContext;
    }
    return establishing;
}

LONG SCardReleaseContext(SCARDCONTEXT context) {
    calls.emplace_back(context == kContext ? "release" : "release of no context");
    return SCARD_S_SUCCESS;
}

LONG SCardListReaders(SCARDCONTEXT /*context*/, LPCSTR /*groups*/, LPSTR names, LPDWORD size) {
    std::string list;
    for (const Reader& reader : readers) {
        list += reader.name + '\0';
    }
    list += '\0';
    if (!terminatesList) {
        list.resize(list.size() - 2);
    }
    if (listing != SCARD_S_SUCCESS) {
        return listing;
    }
    if (names != nullptr) {
        std::memcpy(names, list.data(), std::min<std::size_t>(list.size(), *size));
    }
    *size = static_cast<DWORD>(list.size());
    return SCARD_S_SUCCESS;
}

LONG SCardConnect(SCARDCONTEXT context, LPCSTR name, DWORD share, DWORD protocols,
                  LPSCARDHANDLE card, LPDWORD protocol) {
    calls.push_back(std::string(context == kContext ? "" : "contextless ") + "connect " + name +
                    " share " + number(share) + " protocol " + number(protocols));
    *protocol = 0;
    for (std::size_t i = 0; i < readers.size(); ++i) {
        if (readers[i].name == name) {
            if (readers[i].connection == SCARD_S_SUCCESS) {
                *card = kFirstCard + static_cast<SCARDHANDLE>(i);
            }
            return readers[i].connection;
        }
    }
    return SCARD_E_UNKNOWN_READER;
}

LONG SCardDisconnect(SCARDHANDLE card, DWORD disposition) {
    calls.push_back("disconnect " + std::to_string(card - kFirstCard) + " disposition " +
                    number(disposition));
    return SCARD_S_SUCCESS;
}

LONG SCardGetAttrib(SCARDHANDLE card, DWORD attribute, LPBYTE bytes, LPDWORD length) {
    const Reader& reader = readers.at(static_cast<std::size_t>(card - kFirstCard));
    const Attribute& answer = attribute == 0x10100 ? reader.vendor : reader.serial;
    calls.push_back((attribute == 0x10100   ? "vendor "
                     : attribute == 0x10103 ? "serial "
                                            : "other attribute ") +
                    number(*length));
    if (answer.result == SCARD_S_SUCCESS) {
        std::memcpy(bytes, answer.bytes.data(),
                    std::min<std::size_t>(answer.bytes.size(), *length));
        *length =
            answer.announced != 0 ? answer.announced : static_cast<DWORD>(answer.bytes.size());
    }
    return answer.result;
}

LONG SCardControl(SCARDHANDLE card, DWORD code, LPCVOID sent, DWORD sentLength, LPVOID answer,
                  DWORD capacity, LPDWORD returned) {
    const auto* first = static_cast<const unsigned char*>(sent);
    controls.push_back({card, code, Bytes(first, first + sentLength), capacity, sent == answer});
    if (answers.empty()) {
        return card == 0 ? SCARD_E_INVALID_HANDLE : SCARD_E_NOT_TRANSACTED;
    }
    const Answer next = answers.front();
    answers.erase(answers.begin());
    if (next.result == SCARD_S_SUCCESS) {
        std::copy_n(next.bytes.begin(), std::min<std::size_t>(next.bytes.size(), capacity),
                    static_cast<unsigned char*>(answer));
        *returned = next.announced != 0 ? next.announced : static_cast<DWORD>(next.bytes.size());
    }
    return next.result;
}

} // extern "C"

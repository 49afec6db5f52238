#include "tests/support/scripted_ports.h"

#include "devices/pcsc_port.h"
#include "devices/serial_port.h"

#include <algorithm>
#include <cstring>

namespace scripted_ports {

std::vector<Exchange> exchanges;
std::vector<std::string> events;
std::vector<QByteArray> answers;
bool announcesUnwrittenAnswers = false;
bool closingSucceeds = true;
std::function<void(std::size_t)> afterExchange;

void reset() {
    exchanges.clear();
    events.clear();
    answers.clear();
    announcesUnwrittenAnswers = false;
    closingSucceeds = true;
    afterExchange = nullptr;
}

namespace {

bool exchange(const unsigned char* in, int inLen, unsigned char* out, int* outLen, int auxTimeout,
              int responseTimeoutMs) {
    exchanges.push_back({QByteArray(reinterpret_cast<const char*>(in), inLen), *outLen, auxTimeout,
                         responseTimeoutMs});
    if (!announcesUnwrittenAnswers) {
        const std::size_t number = exchanges.size();
        const QByteArray answer = number <= answers.size() ? answers[number - 1] : QByteArray();
        *outLen = std::min(*outLen, answer.size());
        std::memcpy(out, answer.constData(), static_cast<std::size_t>(*outLen));
    }
    if (afterExchange) {
        afterExchange(exchanges.size());
    }
    return true;
}

bool close() {
    events.emplace_back("close");
    return closingSucceeds;
}

} // namespace
} // namespace scripted_ports

VEXASerialPort::VEXASerialPort(std::string devicePath) {
    scripted_ports::events.push_back("serial " + devicePath);
}
VEXASerialPort::~VEXASerialPort() = default;
bool VEXASerialPort::ExecuteCommand(unsigned char* in, int inLen, unsigned char* out, int* outLen,
                                    int auxTimeout, int responseTimeoutMs) {
    return scripted_ports::exchange(in, inLen, out, outLen, auxTimeout, responseTimeoutMs);
}
bool VEXASerialPort::closePort() {
    return scripted_ports::close();
}

VEXAPcscPort::VEXAPcscPort(const char* readerName) {
    scripted_ports::events.push_back("pcsc " + std::string(readerName));
}
VEXAPcscPort::~VEXAPcscPort() = default;
bool VEXAPcscPort::ExecuteCommand(unsigned char* in, int inLen, unsigned char* out, int* outLen,
                                  int auxTimeout, int responseTimeoutMs) {
    return scripted_ports::exchange(in, inLen, out, outLen, auxTimeout, responseTimeoutMs);
}
bool VEXAPcscPort::closePort() {
    return scripted_ports::close();
}

// The port of a terminal behind a PC/SC reader: each command travels in one escape exchange with
// the reader, without a card.
//
// Owner: the port owns its connection and its context. Threads: one at a time.
// Failure: logged; a failing escape counts as success with an unchanged length, see ExecuteCommand.
#pragma once

#include "devices/device_port.h"

#include <PCSC/winscard.h>

#include <array>
#include <cstddef>

class VEXAPcscPort : public VEXADevicePort {
public:
    /// Connects to a reader and asks it for its escape code.
    /// \param readerName the bytes of the name as PC/SC lists it
    explicit VEXAPcscPort(const char* readerName);

    /// Disconnects, if that has not been done.
    ~VEXAPcscPort() override;

    /// Exchanges a command of at most 30720 bytes. When the escape fails the result is true and
    /// neither `out` nor `*outLen` is changed: whoever calls finds out by the content of `out`.
    bool ExecuteCommand(unsigned char* in, int inLen, unsigned char* out, int* outLen,
                        int auxTimeout, int responseTimeoutMs) override;

    /// Disconnects; a second call does nothing.
    bool closePort() override;

    int getResponseTimeout() override { return 3000; }
    int getAuxTimeout() override { return 500; }

private:
    static constexpr std::size_t kPrefixSize = 1;
    static constexpr std::size_t kLargestCommand = 30720;

    void connect(const char* readerName);
    void askForEscapeCode(SCARDHANDLE handle);
    bool exchange(std::size_t sentSize, unsigned char* out, int* outLen);
    void release();

    SCARDHANDLE card = 0; ///< 0 when not connected
    SCARDCONTEXT context = 0;
    DWORD escapeCode = 0; ///< control code of the exchanges
    std::array<unsigned char, kPrefixSize + kLargestCommand> exchangeBuffer{}; ///< both ways
};

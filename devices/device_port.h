// The way to a terminal: one command out, one answer back.
//
// Owner: whoever creates a port. Threads: one at a time.
#pragma once

class VEXADevicePort {
public:
    VEXADevicePort() = default;
    VEXADevicePort(const VEXADevicePort&) = delete;
    VEXADevicePort& operator=(const VEXADevicePort&) = delete;
    virtual ~VEXADevicePort() = default;

    /// Sends a command and collects its answer.
    /// \param in                the command
    /// \param inLen             its length in bytes
    /// \param out               receives the answer
    /// \param outLen            in: the most bytes wanted; out: the bytes received
    /// \param auxTimeout        milliseconds; read by no port, and passed all the same
    /// \param responseTimeoutMs milliseconds to wait for the answer to begin; 0 or less waits as
    ///                          long as the terminal takes
    /// \return false when the exchange failed; an answer that did not come is no failure, but has
    ///         0 bytes
    virtual bool ExecuteCommand(unsigned char* in, int inLen, unsigned char* out, int* outLen,
                                int auxTimeout, int responseTimeoutMs) = 0;

    /// Ends the use of the port.
    virtual bool closePort() = 0;

    /// Milliseconds to pass as responseTimeoutMs.
    virtual int getResponseTimeout() = 0;

    /// Milliseconds to pass as auxTimeout.
    virtual int getAuxTimeout() = 0;
};

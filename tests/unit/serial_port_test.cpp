#include "devices/serial_port.h"
#include "tests/support/log_capture.h"
#include "tests/support/system_calls.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <future>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace {

using Bytes = std::vector<unsigned char>;
using Lines = std::vector<std::string>;

constexpr char kNoSuchDevice[] = "/dev/no-such-terminal";

/// A line with the test at the terminal's end.
class SerialPortTest : public testing::Test {
protected:
    SerialPortTest() {
        system_calls::reset();
        char name[128] = "";
        EXPECT_EQ(openpty(&m_terminal, &m_host, name, nullptr, nullptr), 0);
        m_path = name;
    }
    ~SerialPortTest() override {
        (void)close(m_terminal);
        (void)close(m_host);
    }

    termios settings() const {
        termios t{};
        EXPECT_EQ(tcgetattr(m_host, &t), 0);
        return t;
    }

    /// Sends an answer while the port waits for it.
    void send(const Bytes& bytes) const {
        EXPECT_EQ(write(m_terminal, bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }

    /// Has an answer ready before the port asks for it.
    void answer(const Bytes& bytes) const {
        send(bytes);
        for (int waiting = 0; static_cast<std::size_t>(waiting) < bytes.size();) {
            ASSERT_EQ(ioctl(m_host, FIONREAD, &waiting), 0);
        }
    }

    Bytes receive(std::size_t size) const {
        Bytes bytes(size);
        for (std::size_t got = 0; got < size;) {
            const ssize_t count = read(m_terminal, bytes.data() + got, size - got);
            if (count <= 0) {
                bytes.resize(got);
                break;
            }
            got += static_cast<std::size_t>(count);
        }
        return bytes;
    }

    int m_terminal = -1;
    int m_host = -1;
    std::string m_path;
};

TEST_F(SerialPortTest, TheTimeOutsAreFixed) {
    VEXASerialPort port(m_path);
    EXPECT_EQ(port.getResponseTimeout(), 3000);
    EXPECT_EQ(port.getAuxTimeout(), 200);
}

TEST_F(SerialPortTest, TheLineIsRawWithEightBitsAt9600Baud) {
    termios t = settings();
    t.c_cflag = CS7 | PARENB | CSTOPB | B38400;
    t.c_lflag = ICANON | ISIG | ECHO | ECHOE | ECHOK | ECHONL | IEXTEN;
    t.c_iflag = IGNPAR | PARMRK | INPCK | ISTRIP | ICRNL | IXANY | IXON | BRKINT;
    t.c_oflag = OPOST | ONLCR;
    ASSERT_EQ(tcsetattr(m_host, TCSANOW, &t), 0);
    const VEXASerialPort port(m_path);
    t = settings();
    // A pseudo-terminal is always 8 bits without parity, so CSIZE and PARENB say little here.
    EXPECT_EQ(t.c_cflag & static_cast<tcflag_t>(CSIZE | PARENB | CSTOPB | CLOCAL | CREAD),
              static_cast<tcflag_t>(CS8 | CLOCAL | CREAD));
    EXPECT_EQ(t.c_lflag &
                  static_cast<tcflag_t>(ICANON | ISIG | ECHO | ECHOE | ECHOK | ECHONL | IEXTEN),
              0U);
    EXPECT_EQ(t.c_iflag & static_cast<tcflag_t>(IGNPAR | PARMRK | INPCK | ISTRIP | ICRNL | IXANY |
                                                IXON | BRKINT),
              0U);
    EXPECT_EQ(t.c_oflag & static_cast<tcflag_t>(OPOST), 0U);
    EXPECT_EQ(t.c_cc[VMIN], 1);
    EXPECT_EQ(t.c_cc[VTIME], 2);
    EXPECT_EQ(cfgetospeed(&t), static_cast<speed_t>(B9600));
    EXPECT_EQ(cfgetispeed(&t), static_cast<speed_t>(B9600));
}

TEST_F(SerialPortTest, TheDeviceIsOpenedForBlockingUseAndNotAsTheControllingTerminal) {
    const VEXASerialPort port(m_path);
    EXPECT_EQ(system_calls::openFlags & ~(O_CLOEXEC | O_LARGEFILE), O_RDWR | O_NOCTTY);
}

TEST_F(SerialPortTest, WhatTheLineHeldBeforeIsThrownAway) {
    const VEXASerialPort port(m_path);
    EXPECT_EQ(system_calls::tcsetattrActions, TCSAFLUSH);
}

TEST_F(SerialPortTest, DtrAndRtsAreRaisedBesideTheOtherModemLines) {
    const VEXASerialPort port(m_path);
    EXPECT_EQ(system_calls::modemLines, TIOCM_CTS | TIOCM_DTR | TIOCM_RTS);
}

TEST_F(SerialPortTest, OpeningIsLogged) {
    const LogCapture log;
    const VEXASerialPort port(m_path);
    const Lines lines = log.lines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0], "VEXALD => VEXASerialPort::VEXASerialPort");
    EXPECT_EQ(lines[1].substr(0, 17), "VEXALD Handler : ");
    EXPECT_EQ(lines[2], "VEXALD => SerialPort::ConfigureCOMSession");
    EXPECT_EQ(lines[3], "VEXALD <= SerialPort::ConfigureCOMSession - res=1");
    EXPECT_EQ(lines[4], "VEXALD <= VEXASerialPort::VEXASerialPort");
}

TEST_F(SerialPortTest, AFailedOpeningIsLoggedWithoutAnExitLine) {
    const LogCapture log;
    const VEXASerialPort port(kNoSuchDevice);
    EXPECT_EQ(log.lines(),
              Lines({"VEXALD => VEXASerialPort::VEXASerialPort", "VEXALD Handler : -1"}));
}

TEST_F(SerialPortTest, AfterAFailedOpeningNothingWorksButClosing) {
    VEXASerialPort port(kNoSuchDevice);
    const LogCapture log;
    unsigned char in[] = {1, 2};
    unsigned char out[4] = {};
    int outLen = sizeof out;
    EXPECT_FALSE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(outLen, 0);
    EXPECT_TRUE(log.contains("VEXALD    SerialPort::ExecuteCommand : Writing, err 9"));
    EXPECT_FALSE(port.ConfigureCOMSession());
    EXPECT_TRUE(log.contains("VEXALD    SerialPort::ConfigureCOMSession - Handler not valid"));
    EXPECT_TRUE(log.contains("VEXALD <= SerialPort::ConfigureCOMSession - res=0"));
    EXPECT_TRUE(port.closePort());
}

TEST_F(SerialPortTest, ADeviceThatIsNoTerminalIsLoggedAndUsed) {
    const LogCapture log;
    VEXASerialPort port("/dev/null");
    EXPECT_TRUE(
        log.contains("VEXALD    SerialPort::ConfigureCOMSession - tcgetattr failed with err 25"));
    unsigned char in[] = {1};
    unsigned char out[4] = {};
    int outLen = sizeof out;
    EXPECT_TRUE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(outLen, 0);
}

TEST_F(SerialPortTest, ARefusedSettingIsLogged) {
    system_calls::nextTcsetattrError = EINVAL;
    const LogCapture log;
    const VEXASerialPort port(m_path);
    EXPECT_TRUE(
        log.contains("VEXALD    SerialPort::ConfigureCOMSession - tcsetattr failed with err 22"));
    EXPECT_TRUE(log.contains("VEXALD <= SerialPort::ConfigureCOMSession - res=0"));
    EXPECT_EQ(system_calls::modemLines, -1);
}

TEST_F(SerialPortTest, ACommandIsSentAndItsAnswerRead) {
    VEXASerialPort port(m_path);
    answer({0x05, 0x00, 0xFF});
    unsigned char in[] = {0x02, 0x00, 0x0D, 0x0A};
    unsigned char out[16] = {};
    int outLen = sizeof out;
    const LogCapture log;
    EXPECT_TRUE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(receive(4), Bytes({0x02, 0x00, 0x0D, 0x0A}));
    EXPECT_EQ(outLen, 3);
    EXPECT_EQ(Bytes(out, out + 4), Bytes({0x05, 0x00, 0xFF, 0x00}));
    EXPECT_EQ(log.lines(), Lines({"VEXALD => VEXASerialPort::ExecuteCommand",
                                  "VEXALD SerialPort::ExecuteCommand : Writing : 4 bytes",
                                  "VEXALD => VEXASerialPort::WaitForIncomingData",
                                  "VEXALD <= VEXASerialPort::WaitForIncomingData",
                                  "VEXALD SerialPort::ExecuteCommand : Reading : 3 bytes",
                                  "VEXALD    Got : 0x05 0x00 0xFF ",
                                  "VEXALD <= VEXASerialPort::ExecuteCommand"}));
    ASSERT_EQ(system_calls::selectTimeouts.size(), 1U);
    EXPECT_EQ(system_calls::selectTimeouts[0].tv_sec, 3);
    EXPECT_EQ(system_calls::selectTimeouts[0].tv_usec, 0);
}

TEST_F(SerialPortTest, BadParametersLeaveTheLengthUntouched) {
    VEXASerialPort port(m_path);
    unsigned char in[] = {1};
    unsigned char out[4] = {};
    for (const int length : {0, -1}) {
        int outLen = length;
        const LogCapture log;
        EXPECT_FALSE(port.ExecuteCommand(in, 1, out, &outLen, 200, 3000));
        EXPECT_EQ(outLen, length);
        EXPECT_TRUE(log.contains("VEXALD <= SerialPort::ExecuteCommand - bad parameters"));
    }
    int outLen = 4;
    EXPECT_FALSE(port.ExecuteCommand(in, 1, nullptr, &outLen, 200, 3000));
    EXPECT_EQ(outLen, 4);
    EXPECT_TRUE(system_calls::writeSizes.empty());
}

TEST_F(SerialPortTest, ALongCommandIsWrittenInPieces) {
    VEXASerialPort port(m_path);
    Bytes in(100000);
    for (std::size_t i = 0; i < in.size(); ++i) {
        in[i] = static_cast<unsigned char>(i * 7 + (i >> 8));
    }
    auto received = std::async(std::launch::async, [&] {
        Bytes bytes = receive(in.size());
        send({0x05});
        return bytes;
    });
    unsigned char out[4] = {};
    int outLen = sizeof out;
    EXPECT_TRUE(port.ExecuteCommand(in.data(), 100000, out, &outLen, 200, 0));
    EXPECT_EQ(received.get(), in);
    ASSERT_GE(system_calls::writeSizes.size(), 3U);
    EXPECT_EQ(system_calls::writeSizes[0], 40480U);
    for (const std::size_t size : system_calls::writeSizes) {
        EXPECT_LE(size, 40480U);
    }
}

TEST_F(SerialPortTest, AWriteThatTakesNothingIsRepeated) {
    VEXASerialPort port(m_path);
    answer({0x05});
    system_calls::emptyWrites = 3;
    unsigned char in[] = {1, 2, 3};
    unsigned char out[4] = {};
    int outLen = sizeof out;
    const LogCapture log;
    EXPECT_TRUE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(log.count("VEXALD SerialPort::ExecuteCommand : Writing : 3 bytes"), 4U);
    EXPECT_EQ(receive(3), Bytes({1, 2, 3}));
}

TEST_F(SerialPortTest, WithoutACommandOnlyTheAnswerIsRead) {
    VEXASerialPort port(m_path);
    unsigned char out[4] = {};
    for (const int inLen : {0, -1}) {
        answer({0x05});
        system_calls::writeSizes.clear();
        int outLen = sizeof out;
        EXPECT_TRUE(port.ExecuteCommand(nullptr, inLen, out, &outLen, 200, 3000)) << inLen;
        EXPECT_EQ(outLen, 1) << inLen;
        EXPECT_TRUE(system_calls::writeSizes.empty()) << inLen;
    }
}

TEST_F(SerialPortTest, ATimeOutIsAnEmptyAnswerAndNoFailure) {
    VEXASerialPort port(m_path);
    unsigned char in[] = {1};
    unsigned char out[4] = {};
    int outLen = sizeof out;
    const LogCapture log;
    EXPECT_TRUE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 1009));
    EXPECT_EQ(outLen, 0);
    EXPECT_TRUE(
        log.contains("VEXALD    VEXASerialPort::WaitForIncomingData select returned 0 (timeout)"));
    EXPECT_TRUE(log.contains("VEXALD SerialPort::ExecuteCommand : Reading : 0 bytes"));
    ASSERT_EQ(system_calls::selectTimeouts.size(), 1U);
    EXPECT_EQ(system_calls::selectTimeouts[0].tv_sec, 1);
    EXPECT_EQ(system_calls::selectTimeouts[0].tv_usec, 9000);
}

TEST_F(SerialPortTest, AFailedWaitIsAnEmptyAnswerAndNoFailure) {
    VEXASerialPort port(m_path);
    answer({0x05});
    system_calls::nextSelectError = EINTR;
    unsigned char in[] = {1};
    unsigned char out[4] = {};
    int outLen = sizeof out;
    const LogCapture log;
    EXPECT_TRUE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(outLen, 0);
    EXPECT_TRUE(log.contains(
        "VEXALD    VEXASerialPort::WaitForIncomingData select returned -1 (errno = 4)"));
}

TEST_F(SerialPortTest, AnExceptionalConditionIsAnEmptyAnswerAndNoFailure) {
    VEXASerialPort port(m_path);
    answer({0x05});
    system_calls::nextSelectIsExceptional = true;
    unsigned char in[] = {1};
    unsigned char out[4] = {};
    int outLen = sizeof out;
    const LogCapture log;
    errno = 0;
    EXPECT_TRUE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(outLen, 0);
    bool logged = false;
    for (const std::string& line : log.lines()) {
        logged =
            logged ||
            line.rfind("VEXALD    VEXASerialPort::WaitForIncomingData select returned 1 ", 0) == 0;
    }
    EXPECT_TRUE(logged);
}

TEST_F(SerialPortTest, WithoutATimeOutTheReadWaitsByItself) {
    VEXASerialPort port(m_path);
    unsigned char in[] = {1};
    unsigned char out[4] = {};
    for (const int timeout : {0, -1}) {
        auto answered = std::async(std::launch::async, [&] {
            (void)receive(1);
            send({0x05, 0x06});
        });
        int outLen = sizeof out;
        EXPECT_TRUE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, timeout));
        EXPECT_GE(outLen, 1);
        answered.get();
        (void)tcflush(m_host, TCIFLUSH);
    }
    EXPECT_TRUE(system_calls::selectTimeouts.empty());
}

TEST_F(SerialPortTest, AFailedReadIsAFailure) {
    VEXASerialPort port(m_path);
    answer({0x05});
    unsigned char in[] = {1};
    unsigned char out[4] = {};
    int outLen = sizeof out;
    system_calls::nextReadError = EIO;
    const LogCapture log;
    EXPECT_FALSE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(outLen, 0);
    EXPECT_TRUE(log.contains("VEXALD    SerialPort::ExecuteCommand : Reading, err 5"));
}

TEST_F(SerialPortTest, OnlyTheFirst63BytesOfAnAnswerAreLogged) {
    VEXASerialPort port(m_path);
    answer(Bytes(200, 0xA5));
    unsigned char in[] = {1};
    unsigned char out[255] = {};
    int outLen = sizeof out;
    const LogCapture log;
    EXPECT_TRUE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(outLen, 200);
    std::string shown = "VEXALD    Got : ";
    for (int i = 0; i < 63; ++i) {
        shown += "0xA5 ";
    }
    EXPECT_TRUE(log.contains(shown));
}

TEST_F(SerialPortTest, WhatDoesNotFitStaysForTheNextExchange) {
    VEXASerialPort port(m_path);
    answer({1, 2, 3, 4, 5});
    unsigned char in[] = {1};
    unsigned char out[4] = {};
    int outLen = 3;
    EXPECT_TRUE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(outLen, 3);
    EXPECT_EQ(Bytes(out, out + 4), Bytes({1, 2, 3, 0}));
    outLen = 3;
    EXPECT_TRUE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(Bytes(out, out + outLen), Bytes({4, 5}));
}

TEST_F(SerialPortTest, APulledCableIsAFailedWrite) {
    VEXASerialPort port(m_path);
    (void)close(m_terminal);
    unsigned char in[] = {1};
    unsigned char out[4] = {};
    int outLen = sizeof out;
    const LogCapture log;
    EXPECT_FALSE(port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000));
    EXPECT_EQ(outLen, 0);
    EXPECT_TRUE(log.contains("VEXALD    SerialPort::ExecuteCommand : Writing, err 5"));
    m_terminal = open("/dev/null", O_RDONLY);
}

TEST_F(SerialPortTest, ACableThatIsPulledWhileWaitingIsAnEmptyAnswer) {
    VEXASerialPort port(m_path);
    auto pulled = std::async(std::launch::async, [&] {
        (void)receive(1);
        (void)close(m_terminal);
    });
    unsigned char in[] = {1};
    unsigned char out[4] = {};
    int outLen = sizeof out;
    (void)port.ExecuteCommand(in, sizeof in, out, &outLen, 200, 3000);
    EXPECT_EQ(outLen, 0);
    pulled.get();
    m_terminal = open("/dev/null", O_RDONLY);
}

TEST_F(SerialPortTest, ADescriptorBeyondTheSetIsAnError) {
    VEXASerialPort port(m_path);
    const LogCapture log;
    EXPECT_EQ(port.WaitForIncomingData(FD_SETSIZE, 10), -1);
    EXPECT_EQ(port.WaitForIncomingData(-1, 10), -1);
    EXPECT_EQ(log.count("VEXALD    VEXASerialPort::WaitForIncomingData select returned -1 "
                        "(errno = 9)"),
              2U);
}

TEST_F(SerialPortTest, ClosingLeavesTheDeviceNodeOpen) {
    int before = 0;
    {
        VEXASerialPort port(m_path);
        before = dup(0);
        ASSERT_GE(before, 0);
        (void)close(before);
        const LogCapture log;
        EXPECT_TRUE(port.closePort());
        EXPECT_TRUE(port.closePort());
        EXPECT_EQ(
            log.lines(),
            Lines({"VEXALD => VEXASerialPort::closePort", "VEXALD Result of handle closing : 1",
                   "VEXALD <= VEXASerialPort::closePort", "VEXALD => VEXASerialPort::closePort",
                   "VEXALD Result of handle closing : 1", "VEXALD <= VEXASerialPort::closePort"}));
    }
    const int after = dup(0);
    ASSERT_GE(after, 0);
    (void)close(after);
    EXPECT_EQ(after, before) << "a descriptor was freed";
}

TEST_F(SerialPortTest, DestructionIsOnlyLogged) {
    auto* port = new VEXASerialPort(m_path);
    const LogCapture log;
    delete port;
    EXPECT_EQ(log.lines(), Lines({"VEXALD => VEXASerialPort::~VEXASerialPort",
                                  "VEXALD <= VEXASerialPort::~VEXASerialPort"}));
}

} // namespace

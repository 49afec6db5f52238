// The port over a PC/SC reader, against a PC/SC library that the test scripts.

#include "devices/pcsc_port.h"
#include "tests/support/log_capture.h"
#include "tests/support/scripted_pcsc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace {

using scripted_pcsc::Answer;
using scripted_pcsc::Bytes;
using Lines = std::vector<std::string>;

constexpr char kReader[] = "Halvorin Terminal 00 00";
constexpr int kLargest = 30720;

class PcscPortTest : public testing::Test {
protected:
    PcscPortTest() {
        scripted_pcsc::reset();
        scripted_pcsc::readers = {{kReader}};
    }

    /// The control code that the port uses for its exchanges with a reader of these features.
    static DWORD codeWith(const Answer& features) {
        scripted_pcsc::answers = {features, {0, {0, 0}}};
        VEXAPcscPort port(kReader);
        unsigned char in[] = {1};
        unsigned char out[4] = {};
        int outLen = sizeof out;
        (void)port.ExecuteCommand(in, 1, out, &outLen, 500, 3000);
        return scripted_pcsc::controls.back().code;
    }

    /// What one exchange came to.
    struct Exchange {
        bool result;
        int outLen;
        Bytes out;
    };

    /// One exchange with a port that is connected; `out` holds EE where it is not written.
    static Exchange exchange(Bytes in, int inLen, int outLen, const Answer& answer) {
        scripted_pcsc::answers = {{}, answer};
        VEXAPcscPort port(kReader);
        Exchange done{false, outLen, Bytes(static_cast<std::size_t>(std::max(outLen, 1)), 0xEE)};
        in.resize(std::max<std::size_t>(in.size(), 1));
        done.result =
            port.ExecuteCommand(in.data(), inLen, done.out.data(), &done.outLen, 500, 3000);
        return done;
    }

    static Exchange exchange(const Bytes& in, int outLen, const Answer& answer) {
        return exchange(in, static_cast<int>(in.size()), outLen, answer);
    }
};

TEST_F(PcscPortTest, TheTimeOutsAreFixed) {
    VEXAPcscPort port(kReader);
    EXPECT_EQ(port.getResponseTimeout(), 3000);
    EXPECT_EQ(port.getAuxTimeout(), 500);
}

TEST_F(PcscPortTest, ConnectsDirectlyAsksForTheFeaturesAndLogsIt) {
    scripted_pcsc::answers = {{0, {0x13, 4, 0x42, 0x33, 0, 1}}};
    const LogCapture log;
    {
        const VEXAPcscPort port(kReader);
        EXPECT_EQ(log.lines(),
                  Lines({"VEXALD => VEXAPcscPort::VEXAPcscPort connect to Halvorin Terminal 00 00",
                         "VEXALD VEXAPcscPort : Reader initialized !!",
                         "VEXALD <= VEXAPcscPort::VEXAPcscPort"}));
    }
    EXPECT_EQ(scripted_pcsc::calls,
              Lines({"establish scope 2", "connect Halvorin Terminal 00 00 share 3 protocol 1",
                     "disconnect 0 disposition 0", "release"}));
    ASSERT_EQ(scripted_pcsc::controls.size(), 1U);
    EXPECT_EQ(scripted_pcsc::controls[0].code, 0x42000D48U);
    EXPECT_EQ(scripted_pcsc::controls[0].sent, Bytes());
    EXPECT_EQ(scripted_pcsc::controls[0].capacity, 256U);
}

TEST_F(PcscPortTest, ANameKeepsItsBytes) {
    scripted_pcsc::readers = {{"Gr\xC3\xB6\xC3\x9F"
                               "e 00 00"}};
    const VEXAPcscPort port("Gr\xC3\xB6\xC3\x9F"
                            "e 00 00");
    EXPECT_EQ(scripted_pcsc::calls[1], "connect Gr\xC3\xB6\xC3\x9F"
                                       "e 00 00 share 3 protocol 1");
    EXPECT_EQ(scripted_pcsc::controls.size(), 1U);
}

TEST_F(PcscPortTest, ARefusedConnectionReleasesTheContextAtOnce) {
    scripted_pcsc::readers[0].connection = SCARD_E_SHARING_VIOLATION;
    const LogCapture log;
    const VEXAPcscPort port(kReader);
    EXPECT_EQ(log.lines(),
              Lines({"VEXALD => VEXAPcscPort::VEXAPcscPort connect to Halvorin Terminal 00 00",
                     "VEXALD VEXAPcscPort SCardConnect failed Error : 0x8010000b", "",
                     "VEXALD <= VEXAPcscPort::VEXAPcscPort"}));
    EXPECT_EQ(scripted_pcsc::calls.back(), "release");
}

TEST_F(PcscPortTest, AfterARefusedConnectionAnExchangeSucceedsWithItsLengthUnchanged) {
    scripted_pcsc::readers[0].connection = SCARD_E_SHARING_VIOLATION;
    {
        VEXAPcscPort port(kReader);
        unsigned char in[] = {1, 2};
        unsigned char out[9] = {0x55};
        int outLen = sizeof out;
        EXPECT_TRUE(port.ExecuteCommand(in, 2, out, &outLen, 500, 3000));
        EXPECT_EQ(outLen, 9);
        EXPECT_EQ(out[0], 0x55);
        EXPECT_EQ(scripted_pcsc::controls.back().card, 0);
        EXPECT_EQ(scripted_pcsc::controls.back().code, 0U);
        EXPECT_TRUE(port.closePort());
    }
    EXPECT_EQ(std::count(scripted_pcsc::calls.begin(), scripted_pcsc::calls.end(), "release"), 1);
}

TEST_F(PcscPortTest, WithoutAServiceNothingIsConnected) {
    scripted_pcsc::establishing = SCARD_E_NO_SERVICE;
    scripted_pcsc::readers.clear();
    const VEXAPcscPort port(kReader);
    EXPECT_EQ(scripted_pcsc::calls,
              Lines({"establish scope 2",
                     "contextless connect Halvorin Terminal 00 00 share 3 protocol 1",
                     "release of no context"}));
}

TEST_F(PcscPortTest, OnlyTheFirstByteOfTheFeatureMakesTheCode) {
    EXPECT_EQ(codeWith({0, {0x13, 4, 0x42, 0x33, 0, 1}}), 0x42000000U);
    EXPECT_EQ(codeWith({0, {0x13, 4, 0xC2, 0xFF, 0xFF, 0xFF}}), 0xC2000000U);
}

TEST_F(PcscPortTest, TheFirstEscapeFeatureCountsThatHasAFirstByte) {
    EXPECT_EQ(
        codeWith({0, {0x06, 4, 0x41, 0, 0, 1, 0x13, 4, 0x43, 0, 0, 1, 0x13, 4, 0x44, 0, 0, 1}}),
        0x43000000U);
    EXPECT_EQ(codeWith({0, {0x13, 4, 0x00, 1, 1, 1, 0x13, 4, 0x44, 0, 0, 1}}), 0x44000000U);
}

TEST_F(PcscPortTest, WithoutAnEscapeFeatureTheUsualCodeIsUsed) {
    EXPECT_EQ(codeWith({0, {}}), 0x42000001U);
    EXPECT_EQ(codeWith({0, {0x06, 4, 0x42, 0, 0, 1}}), 0x42000001U);
    EXPECT_EQ(codeWith({0, {0x13, 4, 0, 0x33, 0, 1}}), 0x42000001U);
    // An entry that breaks off is none.
    EXPECT_EQ(codeWith({0, {0x13, 4, 0x42, 0x33, 0}}), 0x42000001U);
    EXPECT_EQ(codeWith({0, {0x06, 4, 0x42, 0, 0, 1, 0x13, 4, 0x42, 0, 0}}), 0x42000001U);
}

TEST_F(PcscPortTest, AnAnnouncedCountAboveTheListIsNotTrusted) {
    EXPECT_EQ(codeWith({0, {0x06, 4, 0x42, 0, 0, 1}, 0xFFFFFFFF}), 0x42000001U);
    // The last entry that fits begins at offset 246; the one at 252 does not fit.
    Bytes list(256, 0);
    list[246] = 0x13;
    list[248] = 0x45;
    EXPECT_EQ(codeWith({0, list, 100000}), 0x45000000U);
    list[246] = 0;
    list[252] = 0x13;
    list[254] = 0x45;
    EXPECT_EQ(codeWith({0, list, 258}), 0x42000001U);
}

TEST_F(PcscPortTest, RefusedFeaturesAreLoggedAndTheUsualCodeIsUsed) {
    const LogCapture log;
    EXPECT_EQ(codeWith({SCARD_E_UNSUPPORTED_FEATURE, {}}), 0x42000001U);
    EXPECT_TRUE(
        log.contains("VEXALD VEXAPcscPort CM_IOCTL_GET_FEATURE_REQUEST failed : 0x8010001f"));
    EXPECT_TRUE(log.contains("VEXALD VEXAPcscPort : Reader initialized !!"));
}

TEST_F(PcscPortTest, ACommandGoesOutBehindThePrefixAndTwoBytesOfTheAnswerAreDropped) {
    const LogCapture log;
    const Exchange done = exchange({0x2F, 0xC0, 0x04}, 9, {0, {0x91, 0x00, 0xF2, 0xE0, 0x05}});
    EXPECT_TRUE(done.result);
    EXPECT_EQ(done.outLen, 3);
    EXPECT_EQ(done.out, Bytes({0xF2, 0xE0, 0x05, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}));
    const scripted_pcsc::Control& control = scripted_pcsc::controls.back();
    EXPECT_EQ(control.card, static_cast<SCARDHANDLE>(0x6000000000000100));
    EXPECT_EQ(control.sent, Bytes({0x11, 0x2F, 0xC0, 0x04}));
    EXPECT_TRUE(control.inPlace);
    const Lines lines = log.lines();
    EXPECT_EQ(
        Lines(lines.begin() + 3, lines.begin() + 6),
        Lines({"VEXALD => VEXAPcscPort::ExecuteCommand : Writing 3 bytes",
               "VEXALD ExecuteCommand : got 3 bytes", "VEXALD <= VEXAPcscPort::ExecuteCommand"}));
}

TEST_F(PcscPortTest, TheCapacityCountsTheTwoBytesThatAreDropped) {
    (void)exchange({1}, 9, {0, {0, 0}});
    EXPECT_EQ(scripted_pcsc::controls.back().capacity, 11U);
    (void)exchange({1}, 255, {0, {0, 0}});
    EXPECT_EQ(scripted_pcsc::controls.back().capacity, 257U);
}

TEST_F(PcscPortTest, TheCapacityEndsWithTheExchangeBuffer) {
    (void)exchange({1}, 30719, {0, {0, 0}});
    EXPECT_EQ(scripted_pcsc::controls.back().capacity, 30721U);
    const Bytes whole(30721, 0x77);
    const Exchange done = exchange({1}, 40000, {0, whole});
    EXPECT_EQ(scripted_pcsc::controls.back().capacity, 30721U);
    EXPECT_EQ(done.outLen, 30719);
    EXPECT_EQ(done.out[30718], 0x77);
    EXPECT_EQ(done.out[30719], 0xEE);
}

TEST_F(PcscPortTest, AnAnnouncedAnswerAboveTheCapacityIsNotTrusted) {
    const Exchange done = exchange({1}, 3, {0, {1, 2, 3, 4, 5}, 0xFFFFFFFF});
    EXPECT_TRUE(done.result);
    EXPECT_EQ(done.outLen, 3);
    EXPECT_EQ(done.out, Bytes({3, 4, 5}));
    // Nor above the exchange buffer.
    EXPECT_EQ(exchange({1}, 40000, {0, {1, 2, 3}, 40002}).outLen, 30719);
}

TEST_F(PcscPortTest, AnAnswerOfTwoBytesIsAnEmptySuccess) {
    const Exchange done = exchange({1}, 9, {0, {0x91, 0x00}});
    EXPECT_TRUE(done.result);
    EXPECT_EQ(done.outLen, 0);
}

TEST_F(PcscPortTest, AShorterAnswerFails) {
    const LogCapture log;
    for (const Bytes& answer : {Bytes(), Bytes({0x91})}) {
        const Exchange done = exchange({1}, 9, {0, answer});
        EXPECT_FALSE(done.result);
        EXPECT_EQ(done.outLen, 0);
        EXPECT_TRUE(log.contains("VEXALD    ExecuteCommand response too short : " +
                                 std::to_string(answer.size()) + " bytes"));
    }
}

TEST_F(PcscPortTest, AFailingEscapeIsASuccessWithTheLengthUnchanged) {
    const LogCapture log;
    const Exchange done = exchange({1}, 9, {SCARD_E_NO_SERVICE, {}});
    EXPECT_TRUE(done.result);
    EXPECT_EQ(done.outLen, 9);
    EXPECT_EQ(done.out, Bytes(9, 0xEE));
    EXPECT_TRUE(log.contains("VEXALD    ExecuteCommand SCardControl Escape command failed : 0x1"));
    EXPECT_EQ(log.count("VEXALD <= VEXAPcscPort::ExecuteCommand"), 1U);
}

TEST_F(PcscPortTest, AnEmptyCommandSendsTwoBytes) {
    (void)exchange({}, 0, 9, {0, {0, 0}});
    EXPECT_EQ(scripted_pcsc::controls.back().sent, Bytes({0x11, 0x0D}));
    (void)exchange({}, -5, 9, {0, {0, 0}});
    EXPECT_EQ(scripted_pcsc::controls.back().sent, Bytes({0x11, 0x0D}));
}

TEST_F(PcscPortTest, TheLargestCommandIsSentAndALargerOneRefused) {
    const LogCapture log;
    EXPECT_TRUE(exchange(Bytes(kLargest, 0xAB), 9, {0, {0, 0}}).result);
    Bytes expected(kLargest + 1, 0xAB);
    expected[0] = 0x11;
    EXPECT_EQ(scripted_pcsc::controls.back().sent == expected, true);
    const std::size_t before = scripted_pcsc::controls.size();
    const Exchange refused = exchange(Bytes(kLargest + 1, 0xAB), 9, {0, {0, 0}});
    EXPECT_FALSE(refused.result);
    EXPECT_EQ(refused.outLen, 0);
    EXPECT_EQ(scripted_pcsc::controls.size(), before + 1); // the question for the features alone
    EXPECT_TRUE(log.contains("VEXALD    ExecuteCommand ERR Buffer too long : 30721 / max=30720"));
    EXPECT_EQ(log.count("VEXALD <= VEXAPcscPort::ExecuteCommand"), 2U);
}

TEST_F(PcscPortTest, ABadOutputIsRefused) {
    const LogCapture log;
    for (const int length : {0, -1}) {
        const Exchange done = exchange({1}, length, {0, {0, 0}});
        EXPECT_FALSE(done.result);
        EXPECT_EQ(done.outLen, 0);
    }
    VEXAPcscPort port(kReader);
    unsigned char in[] = {1};
    int outLen = 9;
    EXPECT_FALSE(port.ExecuteCommand(in, 1, nullptr, &outLen, 500, 3000));
    EXPECT_EQ(outLen, 0);
    EXPECT_EQ(log.count("VEXALD    ExecuteCommand ERR invalid output buff"), 3U);
    EXPECT_EQ(log.count("VEXALD <= VEXAPcscPort::ExecuteCommand"), 3U);
}

TEST_F(PcscPortTest, OnlyTheFirstClosingReleases) {
    {
        VEXAPcscPort port(kReader);
        scripted_pcsc::calls.clear();
        const LogCapture log;
        EXPECT_TRUE(port.closePort());
        EXPECT_EQ(log.lines(), Lines({"VEXALD VEXAPcscPort::closePort"}));
        EXPECT_TRUE(port.closePort());
    }
    EXPECT_EQ(scripted_pcsc::calls, Lines({"disconnect 0 disposition 0", "release"}));
}

TEST_F(PcscPortTest, TheEndOfAnOpenPortReleasesAndIsLogged) {
    auto port = std::make_unique<VEXAPcscPort>(kReader);
    scripted_pcsc::calls.clear();
    const LogCapture log;
    port.reset();
    EXPECT_EQ(log.lines(), Lines({"VEXALD => VEXAPcscPort::~VEXAPcscPort",
                                  "VEXALD <= VEXAPcscPort::~VEXAPcscPort"}));
    EXPECT_EQ(scripted_pcsc::calls, Lines({"disconnect 0 disposition 0", "release"}));
}

TEST_F(PcscPortTest, TheLevelsAreThoseThatTheMaskAsksFor) {
    g_logLevel = kLogInfo;
    const LogCapture log;
    {
        VEXAPcscPort port(kReader);
        (void)port.closePort();
    }
    EXPECT_EQ(log.lines(), Lines({"VEXALD VEXAPcscPort CM_IOCTL_GET_FEATURE_REQUEST failed : "
                                  "0x80100016",
                                  "VEXALD VEXAPcscPort : Reader initialized !!",
                                  "VEXALD VEXAPcscPort::closePort"}));
    g_logLevel = kLogError;
    (void)exchange({1}, 9, {SCARD_E_NO_SERVICE, {}});
    (void)exchange({1}, 9, {0, {0x91}});
    (void)exchange({1}, 0, {0, {0x91}});
    (void)exchange(Bytes(kLargest + 1, 0), 9, {0, {0, 0}});
    g_logLevel = 0x1F;
    const Lines lines = log.lines();
    EXPECT_EQ(Lines(lines.begin() + 3, lines.end()),
              Lines({"VEXALD    ExecuteCommand SCardControl Escape command failed : 0x1",
                     "VEXALD    ExecuteCommand response too short : 1 bytes",
                     "VEXALD    ExecuteCommand ERR invalid output buff",
                     "VEXALD    ExecuteCommand ERR Buffer too long : 30721 / max=30720"}));
}

} // namespace

// Loads into terminals that go wrong: what the user is told, and what the terminal has stored.

#include "tests/program/program_test.h"

#include <QDir>

namespace {

const QByteArray kInitFailed = "\nCommunication initialization process failed\n";
const QByteArray kProgress50 = "\nLoading progress : 50 %";
const QByteArray kProgress100 = "\nLoading progress : 100 %";

struct Case {
    const char* name;
    QStringList faults;
    QByteArray told; ///< from "Loading has been started" on, up to the result lines
    int code;
    bool stored;
};

void PrintTo(const Case& value, std::ostream* stream) {
    *stream << value.name;
}

class FaultTest : public ProgramTest, public testing::WithParamInterface<Case> {};

TEST_P(FaultTest, IsToldAndLeavesNoHalfDatabase) {
    const Case& expected = GetParam();
    makeTestDatabase(kSampleSize);
    QStringList options;
    for (const QString& fault : expected.faults) {
        options << "--fault" << fault;
    }
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0"}, options);
    EXPECT_EQ(outcome.out,
              loadHead("test.db") + kStarted + expected.told + resultLines(expected.code));
    EXPECT_EQ(outcome.status, expected.code);
    if (expected.stored) {
        EXPECT_EQ(stored() == readFile(path("test.db")), true);
    } else {
        EXPECT_TRUE(storedNothing());
    }
}

const QByteArray kNoAnswer = "\nNo response from the terminal";
const QByteArray kRefused = "\nUpdate request failed with returned message : ";
const QByteArray kSucceeded =
    kInitSucceeded + kProgress50 + kProgress100 + kAllSent + "\nLoading succeeded\n\n";
const QByteArray kNoEnd =
    kInitSucceeded + kProgress50 + kProgress100 + kAllSent + "\nNo response for the ending frame\n";
const QByteArray kHalf = kInitSucceeded + kProgress50;

const Case kCases[] = {
    {"InitSilence", {"init:silence"}, kNoAnswer + kInitFailed, 14, false},
    {"InitWrong", {"init:wrong"}, kInitFailed, 3, false},
    {"InitOtherPad", {"init:bytes=F3E0040078012C45BB"}, kInitFailed, 3, false},
    // A shorter answer that matches as far as it goes is accepted.
    {"InitShort", {"init:short=4"}, kSucceeded, 0, true},
    // Only the first part is read; the second is taken for the answer to the request.
    {"InitSplit",
     {"init:split=100", "request:late=300"},
     kRefused + "0xE0040078012C45\n",
     4,
     false},
    {"InitLate", {"init:late=300"}, kSucceeded, 0, true},
    {"InitTooLate", {"init:late=3300"}, kNoAnswer + kInitFailed, 14, false},
    // What is too much stays in the line and spoils the answer to the request.
    {"InitLong", {"init:long=2", "request:late=300"}, kRefused + "0x0000\n", 4, false},
    {"InitPulled", {"init:pull"}, kNoAnswer + kInitFailed, 14, false},
    {"RequestSilence", {"request:silence"}, kRefused + "0x\n", 4, false},
    {"RequestWrong", {"request:wrong"}, kRefused + "0xF24002000021D5\n", 4, false},
    {"RequestShort", {"request:short=6"}, kRefused + "0xF24002000021\n", 4, false},
    {"RequestRefused", {"request:bytes=020A"}, kRefused + "0x020A\n", 4, false},
    {"RequestSplit", {"request:split=300"}, kRefused + "0xF2\n", 4, false},
    {"RequestLate", {"request:late=300"}, kSucceeded, 0, true},
    // The eighth byte is taken for the answer to the first block: no acknowledgement. The real one
    // is then taken for the answer to the ending frame.
    {"RequestLong",
     {"request:long=1", "data:1:late=300"},
     kInitSucceeded + "\nNo response for the ending frame\n",
     7,
     false},
    {"RequestPulled", {"request:pull"}, kRefused + "0x\n", 4, false},
    {"DataSilence",
     {"data:5:silence"},
     kHalf + kNoAnswer + "\nTimeout when sending data\n",
     14,
     false},
    {"DataNack", {"data:5:nack=41"}, kHalf + "\nA NACK was received : A\n", 5, false},
    {"DataNackAccent", {"data:5:nack=E9"}, kHalf + "\nA NACK was received : é\n", 5, false},
    {"DataNackNul", {"data:1:nack=00"}, kInitSucceeded + "\nA NACK was received : \n", 5, false},
    {"DataNackLong", {"data:5:bytes=0600004142"}, kHalf + "\nA NACK was received : A\n", 5, false},
    {"DataNackIncomplete",
     {"data:5:incomplete-nack"},
     kHalf + "\nAn incomplete NACK was received\n",
     6,
     false},
    // The terminal has not taken the block and says so at the end.
    {"DataRefused", {"data:5:byte=15"}, kHalf + "\nNo response for the ending frame\n", 7, false},
    // A terminal that acknowledges the end all the same: what it says is what the user is told.
    {"DataRefusedEndAcknowledged",
     {"data:2:byte=15", "end:bytes=050000"},
     kInitSucceeded + "\nLoading succeeded\n\n",
     7,
     false},
    {"DataWrong", {"data:5:wrong"}, kHalf + "\nNo response for the ending frame\n", 7, false},
    {"DataNackShort",
     {"data:5:nack=41", "data:5:short=3"},
     kHalf + "\nAn incomplete NACK was received\n",
     6,
     false},
    {"DataNackSplit",
     {"data:5:nack=41", "data:5:split=300"},
     kHalf + "\nAn incomplete NACK was received\n",
     6,
     false},
    {"DataLate", {"data:5:late=300"}, kSucceeded, 0, true},
    {"DataTooLate",
     {"data:5:late=3300"},
     kHalf + kNoAnswer + "\nTimeout when sending data\n",
     14,
     false},
    // 255 of 301 bytes are read; the rest is taken for the answer to the next block.
    {"DataLong",
     {"data:5:long=300", "data:6:late=300"},
     kHalf + "\nNo response for the ending frame\n",
     7,
     false},
    {"DataPulled", {"data:5:pull"}, kHalf + kNoAnswer + "\nTimeout when sending data\n", 14, false},
    {"DataPulledAtTheFirst",
     {"data:1:pull"},
     kInitSucceeded + kNoAnswer + "\nTimeout when sending data\n",
     14,
     false},
    {"DataPulledAtTheLast",
     {"data:8:pull"},
     kHalf + kNoAnswer + "\nTimeout when sending data\n",
     14,
     false},
    {"EndSilence", {"end:silence"}, kNoEnd, 0, true},
    {"EndWrong", {"end:wrong"}, kNoEnd, 0, false},
    {"EndOtherByte", {"end:bytes=050100"}, kNoEnd, 0, false},
    {"EndShort", {"end:short=2"}, kNoEnd, 0, true},
    {"EndSplit", {"end:split=300"}, kNoEnd, 0, true},
    {"EndLong", {"end:long=1"}, kSucceeded, 0, true},
    {"EndLate", {"end:late=300"}, kSucceeded, 0, true},
    {"EndPulled", {"end:pull"}, kNoEnd, 0, false},
};

std::string nameOfCase(const testing::TestParamInfo<Case>& tested) {
    return tested.param.name;
}

INSTANTIATE_TEST_SUITE_P(Terminal, FaultTest, testing::ValuesIn(kCases), nameOfCase);

} // namespace

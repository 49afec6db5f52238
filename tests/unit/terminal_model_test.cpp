// The simulated terminal itself: what it accepts, what it refuses and how it says so.

#include "simulator/terminal_model.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace simulator;
using Texts = std::vector<std::string>;

constexpr char kInit2[] = "2FC0040078012CB8E4";
constexpr char kInitAnswer2[] = "F2 E0 04 00 78 01 2C 45 BB";
// Four bytes for PAD 2, no concepts.
constexpr char kRequest4[] = "2F40080501016000800104"
                             "4B2E";
constexpr char kAccepted2[] = "F2 40 02 00 00 21 2A";

class TerminalModelTest : public testing::Test {
protected:
    void SetUp() override { start({}); }

    void start(const std::vector<std::string>& faults) {
        std::string error;
        std::vector<Fault> parsed;
        for (const std::string& text : faults) {
            const std::optional<Fault> fault = parseFault(text, error);
            ASSERT_TRUE(fault) << error;
            parsed.push_back(*fault);
        }
        m_model.reset();
        ASSERT_TRUE(m_journal.open(path("trace"), path("frames"), "", error)) << error;
        m_model = std::make_unique<TerminalModel>("ttyACM0", path("store"), parsed, m_journal);
    }

    std::string path(const char* name) const { return m_folder.path().toStdString() + "/" + name; }

    /// What the terminal answers; each action a text, "pull" for a pulled cable, "+N " before a
    /// delay of N milliseconds.
    Texts send(const std::string& hexadecimalText) {
        const Bytes bytes = parseBytes(hexadecimalText).value();
        Texts answers;
        for (const Action& action : m_model->receive(bytes.data(), bytes.size())) {
            const std::string delay =
                action.delay.count() == 0 ? "" : "+" + std::to_string(action.delay.count()) + " ";
            answers.push_back(delay + (action.pullsCable ? "pull" : hexadecimal(action.bytes)));
        }
        return answers;
    }

    std::string lastTrace() const {
        const QList<QByteArray> lines =
            readFile(QString::fromStdString(path("trace"))).trimmed().split('\n');
        return lines.last().toStdString();
    }

    QByteArray stored(int pad) const {
        return readFile(QString::fromStdString(path("store")) +
                        QString::asprintf("/pad-%02d.db", pad));
    }

    void beginLoad() {
        (void)send(kInit2);
        ASSERT_EQ(send(kRequest4), Texts({kAccepted2}));
    }

    QTemporaryDir m_folder;
    Journal m_journal;
    std::unique_ptr<TerminalModel> m_model;
};

TEST_F(TerminalModelTest, ALoadIsStoredOnceItIsComplete) {
    EXPECT_EQ(send(kInit2), Texts({kInitAnswer2}));
    EXPECT_EQ(send(kRequest4), Texts({kAccepted2}));
    EXPECT_EQ(send("010003 414243"), Texts({"05"}));
    EXPECT_EQ(send("010001 44"), Texts({"05"}));
    EXPECT_EQ(stored(2), "");
    EXPECT_EQ(send("020000"), Texts({"05 00 00"}));
    EXPECT_EQ(stored(2), "ABCD");
    EXPECT_EQ(lastTrace(),
              "ttyACM0 PAD 2: complete, 4 bytes stored in " + path("store") + "/pad-02.db");
}

TEST_F(TerminalModelTest, BytesMayComeInAnyFragments) {
    Texts answers;
    const std::string all = std::string(kInit2) + kRequest4 +
                            "010004414243"
                            "44020000";
    for (std::size_t i = 0; i < all.size(); i += 2) {
        for (const std::string& answer : send(all.substr(i, 2))) {
            answers.push_back(answer);
        }
    }
    const Texts expected = {kInitAnswer2, kAccepted2, "05", "05 00 00"};
    EXPECT_EQ(answers, expected);
    EXPECT_EQ(send(all), expected);
}

TEST_F(TerminalModelTest, EveryPadIsAnsweredUnderItsOwnAddress) {
    EXPECT_EQ(send("1FC0040078012CB8E4"), Texts({"F1 E0 04 00 78 01 2C 45 BB"}));
    EXPECT_EQ(send("EFC0040078012CB8E4"), Texts({"FE E0 04 00 78 01 2C 45 BB"}));
    EXPECT_EQ(send("0FC0040078012CB8E4"), Texts({"F0 E0 04 00 78 01 2C 45 BB"}));
}

TEST_F(TerminalModelTest, AnEmptyLoadStoresAnEmptyFile) {
    (void)send(kInit2);
    EXPECT_EQ(send("2F400705010160008000"
                   "E091"),
              Texts({kAccepted2}));
    EXPECT_EQ(send("020000"), Texts({"05 00 00"}));
    EXPECT_TRUE(QFile::exists(QString::fromStdString(path("store/pad-02.db"))));
}

TEST_F(TerminalModelTest, AWrongInitialisationIsNotAnswered) {
    EXPECT_EQ(send("2FC0040078012CB8E5"), Texts());
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: initialisation frame: bytes after the address are "
                           "C0 04 00 78 01 2C B8 E5, expected C0 04 00 78 01 2C B8 E4");
}

TEST_F(TerminalModelTest, BytesThatBeginNoFrameAreDiscarded) {
    EXPECT_EQ(send("FE0102"), Texts());
    EXPECT_EQ(lastTrace(),
              "ttyACM0 discarded 3 bytes that begin with FE 01 02: no frame begins with it");
    EXPECT_EQ(send("2F77"), Texts());
    EXPECT_EQ(lastTrace(),
              "ttyACM0 discarded 2 bytes that begin with 2F 77: the second byte is no command");
    EXPECT_EQ(send(kInit2), Texts({kInitAnswer2}));
}

TEST_F(TerminalModelTest, AWrongRequestIsRefusedWithAReason) {
    const struct {
        const char* frame;
        const char* reason;
    } wrong[] = {
        {"2F40080501016000800104"
         "0000",
         "CRC is 00 00, expected 4B 2E"},
        {"3F40080501016000800104"
         "0E5F",
         "it is for PAD 3, but PAD 2 was woken"},
        {"2F40090501016000800104"
         "B663",
         "length byte is 09, expected 08"},
        {"2F40080501016100800104"
         "0F25",
         "bytes 3 to 6 are 05 01 01 61, expected 05 01 01 60"},
        {"2F40080501016000810104"
         "9774",
         "byte 8 is 81, expected 80"},
        {"2F400C05010160008005"
         "0000000004"
         "AEA8",
         "5 size bytes are more than 4"},
        {"2F40090501016000800200"
         "04"
         "FE1E",
         "the first size byte is 0"},
        {"2F400B0501016003800104"
         "900141"
         "5F7A",
         "no concept begins with 90"},
        {"2F400B0501016003800104"
         "810241"
         "7E8F",
         "the last concept goes beyond the concept block"},
    };
    for (const auto& [frame, reason] : wrong) {
        (void)send(kInit2);
        const Texts answers = send(frame);
        ASSERT_EQ(answers.size(), 1U) << reason;
        EXPECT_EQ(answers[0].substr(3, 11), "40 02 00 01") << reason;
        EXPECT_EQ(lastTrace(), std::string("ttyACM0 refused: request frame: ") + reason);
    }
}

TEST_F(TerminalModelTest, ARequestToASleepingTerminalIsRefused) {
    EXPECT_EQ(send(kRequest4)[0].substr(0, 14), "F2 40 02 00 01");
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: request frame: the terminal was not woken");
}

TEST_F(TerminalModelTest, ASecondRequestIsRefusedAndEndsTheLoad) {
    beginLoad();
    EXPECT_EQ(send(kRequest4)[0].substr(0, 14), "F2 40 02 00 01");
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: request frame: a load is under way");
    EXPECT_EQ(send("01000141"), Texts({"06 00 00 53"}));
}

TEST_F(TerminalModelTest, ARequestWithTooManySizeBytesIsRefusedBeforeAllOfItHasCome) {
    (void)send(kInit2);
    EXPECT_EQ(send("2F400C0501016000800500")[0].substr(0, 14), "F2 40 02 00 01");
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: request frame: 5 size bytes are more than 4");
    EXPECT_EQ(send("00000004AEA8"), Texts());
    EXPECT_EQ(send(kInit2), Texts({kInitAnswer2}));
}

TEST_F(TerminalModelTest, ABlockWithoutALoadIsRefused) {
    EXPECT_EQ(send("01000141"), Texts({"06 00 00 53"}));
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: block 1: no load is under way");
}

TEST_F(TerminalModelTest, ABlockOfNoBytesOrTooManyIsRefused) {
    beginLoad();
    EXPECT_EQ(send("010000"), Texts({"06 00 00 4C"}));
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: block 1: 0 bytes are not 1 to 30720");
    beginLoad();
    std::string tooLong = "017801";
    tooLong.append(2 * 30721, '0');
    EXPECT_EQ(send(tooLong), Texts({"06 00 00 4C"}));
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: block 1: 30721 bytes are not 1 to 30720");
    EXPECT_EQ(send(kInit2), Texts({kInitAnswer2}));
}

TEST_F(TerminalModelTest, MoreThanWasAnnouncedIsRefused) {
    beginLoad();
    EXPECT_EQ(send("0100054142434445"), Texts({"06 00 00 4F"}));
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: block 1: 5 bytes are more than the 4 announced");
}

TEST_F(TerminalModelTest, AnEndBeforeAllHasComeIsRefusedAndNothingStored) {
    beginLoad();
    (void)send("010003414243");
    EXPECT_EQ(send("020000"), Texts({"06 00 00"}));
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: ending frame: 3 bytes came, 4 were announced");
    EXPECT_EQ(QDir(QString::fromStdString(path("store"))).entryList(QDir::Files), QStringList());
}

TEST_F(TerminalModelTest, AWrongEndIsRefused) {
    beginLoad();
    EXPECT_EQ(send("020001"), Texts({"06 00 00"}));
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: ending frame: 02 00 01, expected 02 00 00");
}

TEST_F(TerminalModelTest, ALoadThatIsBrokenOffKeepsTheOldDatabase) {
    beginLoad();
    (void)send("01000441424344");
    (void)send("020000");
    beginLoad();
    (void)send("01000358595A");
    m_model->lineDown();
    EXPECT_EQ(stored(2), "ABCD");
    EXPECT_EQ(lastTrace(),
              "ttyACM0 PAD 2: the line went down after 3 of 4 bytes, nothing is stored");
    EXPECT_EQ(send("020000"), Texts({"06 00 00"}));
}

TEST_F(TerminalModelTest, TheTraceShowsTheConcepts) {
    (void)send(kInit2);
    // Concept 1 = "alpha", 2 = "beta".
    EXPECT_EQ(send("2F40160501016"
                   "00D80"
                   "021000"
                   "8105616C706861"
                   "820462657461"
                   "39B7"),
              Texts({kAccepted2}));
    EXPECT_EQ(lastTrace(), "ttyACM0 PAD 2: a load of 4096 bytes is announced, "
                           "concept 1 = \"alpha\", concept 2 = \"beta\"");
}

TEST_F(TerminalModelTest, EveryFrameAndAnswerIsWrittenDown) {
    beginLoad();
    (void)send("01000441424344");
    EXPECT_EQ(readFile(QString::fromStdString(path("frames"))),
              QByteArray("> 2F C0 04 00 78 01 2C B8 E4\n< F2 E0 04 00 78 01 2C 45 BB\n"
                         "> 2F 40 08 05 01 01 60 00 80 01 04 4B 2E\n< F2 40 02 00 00 21 2A\n"
                         "> 01 00 04 41 42 43 44\n< 05\n"));
}

TEST_F(TerminalModelTest, AFaultAtTheInitialisationChangesThatAnswer) {
    const struct {
        const char* fault;
        Texts init;
        bool wakes;
    } faults[] = {
        {"init:silence", {}, true},
        {"init:wrong", {"F2 E0 04 00 78 01 2C 45 44"}, false},
        {"init:short=4", {"F2 E0 04 00"}, true},
        {"init:long=2", {"F2 E0 04 00 78 01 2C 45 BB 00 00"}, true},
        {"init:split=20", {"F2", "+20 E0 04 00 78 01 2C 45 BB"}, true},
        {"init:late=30", {"+30 F2 E0 04 00 78 01 2C 45 BB"}, true},
        {"init:bytes=0102", {"01 02"}, false},
        {"init:byte=7F", {"7F"}, false},
        {"init:pull", {"pull"}, false},
    };
    for (const auto& [fault, init, wakes] : faults) {
        start({fault});
        EXPECT_EQ(send(kInit2), init) << fault;
        EXPECT_EQ(send(kRequest4) == Texts({kAccepted2}), wakes) << fault;
    }
}

TEST_F(TerminalModelTest, AFaultAtABlockChangesThatAnswer) {
    const struct {
        const char* fault;
        Texts block;
    } faults[] = {
        {"data:1:wrong", {"15"}},     {"data:1:nack=41", {"06 00 00 41"}},
        {"data:1:byte=05", {"05"}},   {"data:1:incomplete-nack", {"06 00"}},
        {"data:1:split=20", {"05"}},  {"data:2:silence", {"05"}},
        {"data:1:late=5", {"+5 05"}}, {"data:1:pull", {"pull"}},
    };
    for (const auto& [fault, block] : faults) {
        start({fault});
        beginLoad();
        EXPECT_EQ(send("01000441424344"), block) << fault;
    }
}

TEST_F(TerminalModelTest, SeveralFaultsAtOneFrameWorkInTheirOrder) {
    start({"init:short=4", "init:split=20", "init:late=30"});
    EXPECT_EQ(send(kInit2), Texts({"+30 F2", "+20 E0 04 00"}));
    start({"init:late=30", "init:late=5", "init:bytes=0102", "init:long=1"});
    EXPECT_EQ(send(kInit2), Texts({"+35 01 02 00"}));
}

TEST_F(TerminalModelTest, ABlockRefusedByAFaultIsNotStored) {
    start({"data:2:byte=15"});
    beginLoad();
    EXPECT_EQ(send("0100024142"), Texts({"05"}));
    EXPECT_EQ(send("0100024344"), Texts({"15"}));
    EXPECT_EQ(send("0100024344"), Texts({"06 00 00 53"}));
    EXPECT_EQ(lastTrace(), "ttyACM0 refused: block 3: no load is under way");
    EXPECT_EQ(send("020000"), Texts({"06 00 00"}));
    EXPECT_EQ(stored(2), "");
}

TEST_F(TerminalModelTest, TheRightAnswerInItsOwnPlaceIsAnAcceptance) {
    start({"init:bytes=F2E0040078012C45BB", "request:bytes=F240020000212A", "end:bytes=050000"});
    beginLoad();
    (void)send("01000441424344");
    EXPECT_EQ(send("020000"), Texts({"05 00 00"}));
    EXPECT_EQ(stored(2), "ABCD");
}

TEST_F(TerminalModelTest, AFaultIsTraced) {
    start({"data:1:silence"});
    beginLoad();
    EXPECT_EQ(send("01000441424344"), Texts());
    EXPECT_EQ(lastTrace(), "ttyACM0 shows a fault: data:1:silence");
}

TEST_F(TerminalModelTest, ANewInitialisationBreaksOffALoad) {
    beginLoad();
    EXPECT_EQ(send(kInit2), Texts({kInitAnswer2}));
    EXPECT_TRUE(readFile(QString::fromStdString(path("trace")))
                    .contains("PAD 2: the load is broken off by a new initialisation frame\n"));
    EXPECT_EQ(send("01000441424344"), Texts({"06 00 00 53"}));
}

TEST_F(TerminalModelTest, AStoreThatCannotBeWrittenIsAReasonToRefuse) {
    ASSERT_TRUE(writeFile(QString::fromStdString(path("store")), "in the way"));
    start({});
    (void)send(kInit2);
    EXPECT_EQ(send(kRequest4)[0].substr(0, 14), "F2 40 02 00 02");
    EXPECT_EQ(lastTrace(),
              "ttyACM0 refused: request frame: cannot write " + path("store") + "/pad-02.db");
}

TEST_F(TerminalModelTest, AnEndWithoutALoadTakesNoTime) {
    std::string error;
    ASSERT_TRUE(m_journal.open(path("trace"), path("frames"), path("times"), error)) << error;
    EXPECT_EQ(send("020000"), Texts({"06 00 00"}));
    EXPECT_FALSE(readFile(QString::fromStdString(path("times"))).contains("blocks"));
}

TEST_F(TerminalModelTest, FaultsThatAreNotUnderstoodAreExplained) {
    for (const char* text :
         {"", "nowhere:silence", "data:silence", "data:0:silence", "init:odd", "init:short",
          "init:short=x", "init:silence=1", "init:byte=0102", "init:bytes=0", "init:bytes=zz",
          "init:nack", "init:short=1048577", "init:late=3600001"}) {
        std::string error;
        EXPECT_FALSE(parseFault(text, error)) << text;
        EXPECT_EQ(error.substr(0, 8 + std::strlen(text)), "fault \"" + std::string(text) + "\"");
    }
}

} // namespace

// The data frames and the ending frame, against a scripted port. All sessions use PAD 2.

#include "tests/unit/session_fixture.h"

namespace {

using Lines = std::vector<std::string>;

class DataTest : public SessionTest {
protected:
    /// A session whose load of a file of this size was accepted.
    std::unique_ptr<VEXAUsbConnector> loading(qint64 size) {
        acceptLoad();
        auto session = std::make_unique<VEXAUsbConnector>(terminal(), databaseOf(size), 2);
        std::string response;
        EXPECT_EQ(session->operate(response), 0);
        return session;
    }
    QString m_nack;
};

TEST_F(DataTest, AFileOf30721BytesIsSentInTwoBlocks) {
    const auto session = loading(30721);
    answer({"05", "05"});
    EXPECT_EQ(session->sendDataFrame(m_nack), 0);
    EXPECT_EQ(session->sendDataFrame(m_nack), 0);
    EXPECT_EQ(session->sendDataFrame(m_nack), 9);
    const QByteArray content = readFile(path("test.db"));
    EXPECT_EQ(scripted_ports::exchanges.size(), 4U);
    EXPECT_EQ(sent(3), "017800" + content.left(30720).toHex().toUpper());
    EXPECT_EQ(sent(4), "010001" + content.mid(30720).toHex().toUpper());
    EXPECT_EQ(scripted_ports::exchanges[2].capacity, 255);
    EXPECT_EQ(scripted_ports::exchanges[2].responseTimeoutMs, 3000);
    EXPECT_EQ(scripted_ports::exchanges[2].auxTimeout, 200);
}

TEST_F(DataTest, AnAcknowledgedBlockCountsAsProgress) {
    const auto session = loading(61440);
    answer({"05", "05"});
    EXPECT_EQ(session->getProgress(), 0);
    EXPECT_EQ(session->sendDataFrame(m_nack), 0);
    EXPECT_EQ(session->getProgress(), 50);
    EXPECT_EQ(session->sendDataFrame(m_nack), 0);
    EXPECT_EQ(session->getProgress(), 100);
}

TEST_F(DataTest, ProgressIsRoundedTowardsZero) {
    const auto session = loading(92160);
    answer({"05", "05"});
    (void)session->sendDataFrame(m_nack);
    EXPECT_EQ(session->getProgress(), 33);
    (void)session->sendDataFrame(m_nack);
    EXPECT_EQ(session->getProgress(), 66);
}

TEST_F(DataTest, TheDataExchangeIsLogged) {
    const auto session = loading(4096);
    answer({"0500"});
    const LogCapture log;
    (void)session->sendDataFrame(m_nack);
    EXPECT_EQ(log.lines(),
              Lines({"VEXALD => VEXAUsbConnector::sendDataFrame", "VEXALD First byte : 01",
                     "VEXALD Second byte: 10", "VEXALD Third byte : 00",
                     "VEXALD Number of bytes sent : 4099", "VEXALD    Number of bytes received : 2",
                     "VEXALD    Data 0 : Response = 05", "VEXALD    Data 1 : Response = 00",
                     "VEXALD <= VEXAUsbConnector::sendDataFrame"}));
}

TEST_F(DataTest, TheEndOfTheFileIsLoggedAsAnError) {
    const auto session = loading(4096);
    answer({"05"});
    (void)session->sendDataFrame(m_nack);
    const LogCapture log;
    EXPECT_EQ(session->sendDataFrame(m_nack), 9);
    EXPECT_TRUE(log.contains("VEXALD    All data in file have been read"));
}

TEST_F(DataTest, NoAnswerIsCode14) {
    const auto session = loading(4096);
    const LogCapture log;
    EXPECT_EQ(session->sendDataFrame(m_nack), 14);
    EXPECT_TRUE(log.contains("VEXALD    No response was received"));
    EXPECT_EQ(session->getProgress(), 0);
}

TEST_F(DataTest, ARefusalOfFourBytesIsANackWithTheFourthAsItsText) {
    const auto session = loading(4096);
    answer({"06000041"});
    const LogCapture log;
    EXPECT_EQ(session->sendDataFrame(m_nack), 5);
    EXPECT_EQ(m_nack, "A");
    EXPECT_TRUE(log.contains("VEXALD Data block refused : rep=0x06"));
    EXPECT_EQ(session->getProgress(), 0);
}

TEST_F(DataTest, ALongerNackStillHasOneCharacter) {
    const auto session = loading(4096);
    answer({"060000E9424344"});
    EXPECT_EQ(session->sendDataFrame(m_nack), 5);
    EXPECT_EQ(m_nack, QString(QChar(0xE9)));
}

TEST_F(DataTest, ARefusalOfFewerBytesIsAnIncompleteNack) {
    for (const char* bytes : {"06", "0600", "060000"}) {
        scripted_ports::reset();
        const auto session = loading(4096);
        answer({bytes});
        m_nack = "untouched";
        EXPECT_EQ(session->sendDataFrame(m_nack), 6) << bytes;
        EXPECT_EQ(m_nack, "untouched");
    }
}

TEST_F(DataTest, AnyOtherFirstByteRefusesTheBlock) {
    for (const char* bytes : {"15", "00", "04", "07000041", "FF"}) {
        scripted_ports::reset();
        const auto session = loading(4096);
        answer({bytes});
        const LogCapture log;
        EXPECT_EQ(session->sendDataFrame(m_nack), 7) << bytes;
        EXPECT_TRUE(log.contains("VEXALD    Data block was refused"));
    }
}

TEST_F(DataTest, ABlockIsNeverSentAgain) {
    const auto session = loading(30721);
    answer({"15", "05"});
    EXPECT_EQ(session->sendDataFrame(m_nack), 7);
    EXPECT_EQ(session->sendDataFrame(m_nack), 0);
    EXPECT_EQ(sent(4).left(6), "010001");
}

TEST_F(DataTest, AFileThatCannotBeReadIsNotTakenForItsEnd) {
    acceptLoad();
    (void)databaseOf(4096);
    ASSERT_TRUE(QFile::link(path("test.db"), path("link.db")));
    const VEXADbManager manager(path("link.db").toStdString());
    ASSERT_TRUE(QFile::remove(path("link.db")));
    ASSERT_TRUE(QFile::link("/proc/self/mem", path("link.db"))); // opens, and cannot be read at 0
    VEXAUsbConnector session(terminal(), manager, 2);
    std::string response;
    ASSERT_EQ(session.operate(response), 0);
    const LogCapture log;
    EXPECT_EQ(session.sendDataFrame(m_nack), 14);
    EXPECT_EQ(log.lines()[1].substr(0, 39), "VEXALD    Could not read database file ");
    EXPECT_EQ(scripted_ports::exchanges.size(), 2U);
}

TEST_F(DataTest, ProgressOfALargeFileWrapsAsKnown) {
    // 700 blocks are 21504000 bytes: a hundred times that is 2150400000, which 32 bits take as
    // -2144567296; divided by 67108864 it is -31.
    const auto session = loading(67108864);
    for (int i = 0; i < 700; ++i) {
        answer({"05"});
        ASSERT_EQ(session->sendDataFrame(m_nack), 0);
    }
    EXPECT_EQ(session->getProgress(), -31);
}

class EndTest : public DataTest {
protected:
    std::string ending(const QByteArray& hexadecimal) {
        const auto session = loading(4096);
        scripted_ports::answers.push_back(QByteArray::fromHex(hexadecimal));
        return session->sendEndingFrame() ? "acknowledged" : "failed";
    }
};

TEST_F(EndTest, TheEndingFrameWaitsAsLongAsTheSizeOfTheFileSays) {
    const struct {
        qint64 size;
        int timeout;
    } sizes[] = {{1048576, 20000},   {53, 1}, {52, 0}, {0, 0}, {512, 9}, {30720, 585},
                 {67108864, 1280000}};
    for (const auto& [size, timeout] : sizes) {
        scripted_ports::reset();
        const auto session = loading(4096);
        ASSERT_TRUE(QFile::resize(path("test.db"), size));
        (void)session->sendEndingFrame();
        EXPECT_EQ(sent(3), "020000");
        EXPECT_EQ(scripted_ports::exchanges[2].capacity, 3);
        EXPECT_EQ(scripted_ports::exchanges[2].responseTimeoutMs, timeout) << size;
        EXPECT_EQ(scripted_ports::exchanges[2].auxTimeout, timeout) << size;
    }
}

TEST_F(EndTest, TheAcknowledgementIsComparedAndLogged) {
    const LogCapture log;
    EXPECT_EQ(ending("050000"), "acknowledged");
    EXPECT_EQ(log.count("VEXALD    Byte received : 05 - Desired received byte : 05"), 1U);
    EXPECT_EQ(log.count("VEXALD    Byte received : 00 - Desired received byte : 00"), 2U);
    EXPECT_EQ(log.count("VEXALD Succeeded to send ending frame"), 1U);
}

TEST_F(EndTest, NoMoreThanThreeBytesAreAskedFor) {
    EXPECT_EQ(ending("050000FF"), "acknowledged");
    EXPECT_EQ(scripted_ports::exchanges.back().capacity, 3);
}

TEST_F(EndTest, FewerThanThreeBytesFail) {
    for (const char* bytes : {"", "05", "0500"}) {
        scripted_ports::reset();
        const LogCapture log;
        EXPECT_EQ(ending(bytes), "failed") << bytes;
        EXPECT_EQ(log.count("VEXALD    Not received enough bytes as response"), 1U);
    }
}

TEST_F(EndTest, TheComparisonStopsAtTheFirstDifference) {
    const LogCapture log;
    EXPECT_EQ(ending("050100"), "failed");
    EXPECT_EQ(log.count("VEXALD    Byte received : 05 - Desired received byte : 05"), 1U);
    EXPECT_EQ(log.count("VEXALD    Byte received : 01 - Desired received byte : 00"), 1U);
    EXPECT_EQ(log.count("VEXALD    Byte received : 00 - Desired received byte : 00"), 0U);
    EXPECT_EQ(log.count("VEXALD    Error on ending frame"), 1U);
}

} // namespace

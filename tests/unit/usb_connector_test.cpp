// One loading session, step by step, against a scripted port. All sessions use PAD 2 unless a test
// is about the number.

#include "tests/unit/session_fixture.h"

#include <QDir>

namespace {

using Lines = std::vector<std::string>;

TEST_F(SessionTest, TheInitialisationFrameFollowsThePadAndItsLastBytesDoNot) {
    const struct {
        int pad;
        const char* frame;
        const char* answer;
    } pads[] = {
        {2, "2FC0040078012CB8E4", "F2E0040078012C45BB"},
        {3, "3FC0040078012CB8E4", "F3E0040078012C45BB"},
        {1, "1FC0040078012CB8E4", "F1E0040078012C45BB"},
        {14, "EFC0040078012CB8E4", "FEE0040078012C45BB"},
        {0, "0FC0040078012CB8E4", "F0E0040078012C45BB"},
        {18, "2FC0040078012CB8E4", "02E0040078012C45BB"}, // high bits are lost
    };
    for (const auto& [pad, frame, expected] : pads) {
        scripted_ports::reset();
        answer({expected});
        VEXAUsbConnector session(terminal(), VEXADbManager(), pad);
        bool answered = false;
        EXPECT_TRUE(session.initializeConnection(answered)) << pad;
        EXPECT_TRUE(answered);
        EXPECT_EQ(sent(1), frame);
        EXPECT_EQ(scripted_ports::exchanges[0].capacity, 9);
        EXPECT_EQ(scripted_ports::exchanges[0].auxTimeout, 200);
        EXPECT_EQ(scripted_ports::exchanges[0].responseTimeoutMs, 3000);
        EXPECT_EQ(session.getNumpad(), pad);
    }
}

TEST_F(SessionTest, ASerialTerminalIsOpenedOnItsPort) {
    VEXAUsbConnector session(terminal(), VEXADbManager(), 2);
    bool answered = false;
    (void)session.initializeConnection(answered);
    EXPECT_EQ(scripted_ports::events, Lines({"serial /dev/ttyACM7"}));
}

TEST_F(SessionTest, AReaderIsOpenedByItsNameWithItsOwnTimeOuts) {
    VEXAUsbConnector session(VEXADevice("Reader 00 00", "PCSC", "shown (1)", "", ""),
                             VEXADbManager(), 2);
    bool answered = false;
    (void)session.initializeConnection(answered);
    EXPECT_EQ(scripted_ports::events, Lines({"pcsc Reader 00 00"}));
    EXPECT_EQ(scripted_ports::exchanges[0].auxTimeout, 500);
    EXPECT_EQ(scripted_ports::exchanges[0].responseTimeoutMs, 3000);
}

TEST_F(SessionTest, NoAnswerToTheInitialisationIsNoMismatch) {
    VEXAUsbConnector session(terminal(), VEXADbManager(), 2);
    bool answered = true;
    EXPECT_TRUE(session.initializeConnection(answered));
    EXPECT_FALSE(answered);
}

TEST_F(SessionTest, AShorterInitialisationAnswerThatMatchesIsAccepted) {
    answer({"F2E00400"});
    VEXAUsbConnector session(terminal(), VEXADbManager(), 2);
    bool answered = false;
    EXPECT_TRUE(session.initializeConnection(answered));
    EXPECT_TRUE(answered);
}

TEST_F(SessionTest, AnyDifferingByteOfTheInitialisationAnswerIsRefused) {
    const QByteArray right = QByteArray::fromHex("F2E0040078012C45BB");
    for (int i = 0; i < right.size(); ++i) {
        scripted_ports::reset();
        QByteArray wrong = right;
        wrong[i] = static_cast<char>(wrong[i] ^ 0x10);
        scripted_ports::answers = {wrong};
        VEXAUsbConnector session(terminal(), VEXADbManager(), 2);
        bool answered = false;
        EXPECT_FALSE(session.initializeConnection(answered)) << i;
        EXPECT_TRUE(answered);
    }
}

TEST_F(SessionTest, TheComparisonOfTheInitialisationAnswerIsLogged) {
    answer({"F2E1"});
    VEXAUsbConnector session(terminal(), VEXADbManager(), 2);
    const LogCapture log;
    bool answered = false;
    (void)session.initializeConnection(answered);
    EXPECT_EQ(
        log.lines(),
        Lines({"VEXALD => VEXAUsbConnector::initializeConnection", "VEXALD VEXADevice::isPCSC",
               "VEXALD VEXADevice::getPortCOM", "VEXALD Init Request sent, size of answer : 2",
               "VEXALD    Byte 0 : F2", "VEXALD    TRUE", "VEXALD    Byte 1 : E1",
               "VEXALD    FALSE", "VEXALD <= VEXAUsbConnector::initializeConnection"}));
}

TEST_F(SessionTest, AnAnswerThatWasAnnouncedButNotWrittenIsComparedAsZeros) {
    scripted_ports::announcesUnwrittenAnswers = true;
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    std::string response;
    EXPECT_EQ(session.operate(response), 3);
}

TEST_F(SessionTest, ConstructionLogsThePad) {
    const LogCapture log;
    const VEXAUsbConnector session(terminal(), VEXADbManager(), 5);
    EXPECT_TRUE(log.contains("VEXALD => VEXAUsbConnector::VEXAUsbConnector - pad=5"));
}

TEST_F(SessionTest, ACopyStartsAfresh) {
    acceptLoad();
    answer({"05"});
    VEXAUsbConnector session(terminal(), databaseOf(30720), 2);
    std::string response;
    QString nack;
    ASSERT_EQ(session.operate(response), 0);
    ASSERT_EQ(session.sendDataFrame(nack), 0);
    VEXAUsbConnector copy(session);
    EXPECT_EQ(copy.getNumpad(), 2);
    EXPECT_EQ(copy.getVEXADevice().getPortCOM(), "/dev/ttyACM7");
    EXPECT_EQ(copy.getVEXADbManager().getDbFile(), path("test.db").toStdString());
    scripted_ports::events.clear();
    EXPECT_TRUE(copy.closeConnection());
    EXPECT_TRUE(scripted_ports::events.empty()) << "the copy has no port to close";
}

TEST_F(SessionTest, ADatabaseThatIsNotCoherentIsNotSent) {
    ASSERT_TRUE(writeFile(path("text.db"), QByteArray(5000, 't')));
    VEXAUsbConnector session(terminal(), VEXADbManager(path("text.db").toStdString()), 2);
    std::string response;
    const LogCapture log;
    EXPECT_EQ(session.operate(response), 1);
    EXPECT_TRUE(log.contains("VEXALD    The database is not coherent"));
    EXPECT_TRUE(scripted_ports::events.empty());
}

TEST_F(SessionTest, ADatabaseFileThatIsGoneCannotBeOpened) {
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    ASSERT_TRUE(QFile::rename(path("test.db"), path("moved.db")));
    std::string response;
    const LogCapture log;
    EXPECT_EQ(session.operate(response), 2);
    EXPECT_TRUE(log.contains("VEXALD The database is coherent"));
    EXPECT_TRUE(log.contains("VEXALD    Could not open database file"));
    EXPECT_TRUE(scripted_ports::events.empty());
}

TEST_F(SessionTest, AFileBeyondTheSizeFieldIsRefusedBeforeAnythingIsSent) {
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    ASSERT_TRUE(QFile::resize(path("test.db"), 2147483648));
    std::string response;
    const LogCapture log;
    EXPECT_EQ(session.operate(response), 2);
    EXPECT_TRUE(log.contains("VEXALD    Database file is too large : 2147483648 bytes"));
    EXPECT_TRUE(scripted_ports::events.empty());
}

TEST_F(SessionTest, ASilentTerminalIsCode14AndAWrongOneCode3) {
    {
        VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
        std::string response;
        const LogCapture log;
        EXPECT_EQ(session.operate(response), 14);
        EXPECT_TRUE(log.contains("VEXALD    No response from the terminal"));
    }
    scripted_ports::reset();
    answer({"F1E0040078012C45BB"});
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    std::string response;
    const LogCapture log;
    EXPECT_EQ(session.operate(response), 3);
    EXPECT_TRUE(log.contains("VEXALD    Protocol initialization failed"));
}

TEST_F(SessionTest, TheRequestFrameCarriesSizeAndConcepts) {
    acceptLoad();
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    std::string response;
    EXPECT_EQ(session.operate(response), 0);
    // 2F 40 16 | 05 01 01 60 | 0D 80 | 02 10 00 | 81 05 alpha | 82 04 beta | CRC
    EXPECT_EQ(sent(2), "2F40160501016"
                       "00D80"
                       "021000"
                       "8105616C706861"
                       "820462657461"
                       "39B7");
    EXPECT_EQ(response, "0xF240020000212A");
    EXPECT_EQ(scripted_ports::exchanges[1].capacity, 7);
    EXPECT_EQ(scripted_ports::exchanges[1].responseTimeoutMs, 3000);
    EXPECT_EQ(scripted_ports::exchanges[1].auxTimeout, 200);
}

TEST_F(SessionTest, TheSizeTakesAsManyBytesAsItNeeds) {
    const struct {
        qint64 size;
        QByteArray bytes; ///< their number and they themselves
    } sizes[] = {{0, "00"},
                 {1, "0101"},
                 {255, "01FF"},
                 {256, "020100"},
                 {4096, "021000"},
                 {65535, "02FFFF"},
                 {65536, "03010000"},
                 {16777216, "0401000000"},
                 {2147483647, "047FFFFFFF"}};
    for (const auto& [size, bytes] : sizes) {
        scripted_ports::reset();
        acceptLoad();
        VEXAUsbConnector session(terminal(), database({"CREATE TABLE x (y)"}), 2);
        // Once the database is checked, only the size of the file counts.
        scripted_ports::afterExchange = [this, size = size](std::size_t number) {
            if (number == 1) {
                ASSERT_TRUE(QFile::resize(path("test.db"), size));
            }
        };
        std::string response;
        (void)session.operate(response);
        EXPECT_EQ(sent(2).mid(18, bytes.size()), bytes) << size;
        EXPECT_EQ(sent(2).size(), 18 + bytes.size() + 4) << size;
    }
}

TEST_F(SessionTest, AnEmptyFileIsAnnouncedWithoutSizeBytes) {
    acceptLoad();
    ASSERT_TRUE(writeFile(path("empty.db"), ""));
    VEXAUsbConnector session(terminal(), VEXADbManager(path("empty.db").toStdString()), 2);
    std::string response;
    QString nack;
    EXPECT_EQ(session.operate(response), 0);
    EXPECT_EQ(sent(2), "2F400705010160008000"
                       "E091");
    EXPECT_EQ(session.sendDataFrame(nack), 9);
}

TEST_F(SessionTest, TheSizeIsLogged) {
    acceptLoad();
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    std::string response;
    const LogCapture log;
    (void)session.operate(response);
    EXPECT_TRUE(log.contains("VEXALD File size = 4096, We need 2 bytes"));
    EXPECT_EQ(log.count("VEXALD A byte got : 10"), 1U);
    EXPECT_EQ(log.count("VEXALD A byte got : 00"), 1U);
}

QStringList conceptRows(const QStringList& rows) {
    QStringList statements = {"CREATE TABLE R_DBINFO (NUM_CONCEPT, VALUE)"};
    for (const QString& row : rows) {
        statements << "INSERT INTO R_DBINFO VALUES (" + row + ")";
    }
    return statements;
}

class ConceptTest : public SessionTest {
protected:
    /// The concept block of the request that these rows lead to, in hexadecimal.
    QByteArray blockFor(const QStringList& statements) {
        scripted_ports::reset();
        acceptLoad();
        VEXAUsbConnector session(terminal(), database(statements, 65536), 2);
        std::string response;
        EXPECT_EQ(session.operate(response), 0);
        // Ten bytes of header, three of size, two of CRC.
        const QByteArray frame = QByteArray::fromHex(sent(2));
        EXPECT_EQ(static_cast<unsigned char>(frame[7]), frame.size() - 15);
        return frame.mid(13, frame.size() - 15).toHex().toUpper();
    }
};

TEST_F(ConceptTest, OnlyNumbersFrom1To15AreKept) {
    const LogCapture log;
    EXPECT_EQ(blockFor(conceptRows({"0, 'a'", "1, 'b'", "15, 'c'", "16, 'd'", "-1, 'e'",
                                    "'text', 'f'", "'', 'g'", "NULL, 'h'", "'5x', 'i'"})),
              "8101628F0163");
    EXPECT_EQ(log.count("VEXALD Read a valid line from R_DBINFO"), 2U);
    EXPECT_EQ(log.count("VEXALD Read an invalid line from R_DBINFO : NUM_CONCEPT is out of range"),
              7U);
}

TEST_F(ConceptTest, ANumberMayBeATextOrARealOfAWholeValue) {
    EXPECT_EQ(blockFor(conceptRows({"'7', 'a'", "8.0, 'b'"})), "870161880162");
}

TEST_F(ConceptTest, ValuesOfEveryTypeAreSentAsTexts) {
    EXPECT_EQ(blockFor(conceptRows({"1, NULL", "2, 2.5", "3, x'4142'", "4, 'é'", "5, 42"})),
              "8100"
              "8203322E35"
              "83024142"
              "8402C3A9"
              "85023432");
}

TEST_F(ConceptTest, ConceptsStayInTheOrderOfTheTableAndMayRepeat) {
    EXPECT_EQ(blockFor(conceptRows({"3, 'a'", "1, 'b'", "3, 'c'"})), "830161810162830163");
}

TEST_F(ConceptTest, AnEmptyTableGivesNoBlock) {
    EXPECT_EQ(blockFor(conceptRows({})), "");
}

TEST_F(ConceptTest, AMissingTableGivesNoBlock) {
    EXPECT_EQ(blockFor({"CREATE TABLE other (x)"}), "");
}

TEST_F(ConceptTest, ATableOfOneColumnGivesNoBlock) {
    EXPECT_EQ(blockFor({"CREATE TABLE R_DBINFO (NUM_CONCEPT)", "INSERT INTO R_DBINFO VALUES (1)"}),
              "");
}

TEST_F(ConceptTest, FurtherColumnsAreIgnored) {
    EXPECT_EQ(blockFor({"CREATE TABLE R_DBINFO (NUM_CONCEPT, VALUE, more)",
                        "INSERT INTO R_DBINFO VALUES (1, 'a', 'b')"}),
              "810161");
}

QString text(int length) {
    return "'" + QString(length, 'v') + "'";
}

TEST_F(ConceptTest, ReadingStopsAtTheRowThatExceedsTheBudget) {
    // 9 + 122 = 131 is kept, 131 + 132 = 263 is too much, and what follows is not looked at.
    const LogCapture log;
    EXPECT_EQ(
        blockFor(conceptRows({"1, " + text(120), "2, " + text(130), "3, 'small'", "99, 'bad'"})),
        QByteArray("8178") + QByteArray(120, 'v').toHex());
    EXPECT_EQ(log.count("VEXALD Read a valid line from R_DBINFO"), 2U);
    EXPECT_EQ(log.count("VEXALD Read an invalid line from R_DBINFO : NUM_CONCEPT is out of range"),
              0U);
}

TEST_F(ConceptTest, ABudgetOfJust255IsKept) {
    EXPECT_EQ(blockFor(conceptRows({"1, " + text(244)})),
              QByteArray("81F4") + QByteArray(244, 'v').toHex());
    EXPECT_EQ(blockFor(conceptRows({"1, " + text(245)})), "");
}

TEST_F(ConceptTest, TheLengthByteOfAFrameBeyond255Wraps) {
    // 10 + 3 + 246 = 259 bytes before the CRC; 259 - 3 = 256.
    (void)blockFor(conceptRows({"1, " + text(244)}));
    EXPECT_EQ(sent(2).mid(4, 2), "00");
    EXPECT_EQ(sent(2).mid(14, 2), "F6");
}

TEST_F(ConceptTest, AValueWithANulByteIsSentWhole) {
    EXPECT_EQ(blockFor(conceptRows({"1, 'a' || char(0) || 'b'"})), "8103610062");
}

TEST_F(SessionTest, TheFrameIsBuiltFromTextsThatAreNoNumbers) {
    VEXAUsbConnector session(terminal(), VEXADbManager(), 2);
    // Number 0 of a text that is none; a value of 300 bytes keeps the low byte of its length.
    const QByteArray frame = session.stringToBytes({"x", "3"}, {"a", std::string(300, 'v')});
    EXPECT_EQ(frame.mid(8, 5).toHex(), "8000800161");
    EXPECT_EQ(frame.mid(13, 2).toHex(), "832c");
    EXPECT_EQ(frame.size(), 10 + 3 + 302 + 2);
}

TEST_F(SessionTest, ASixByteRequestAnswerIsARefusal) {
    answer({"F2E0040078012C45BB", "F24002000021"});
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    std::string response;
    const LogCapture log;
    EXPECT_EQ(session.operate(response), 4);
    EXPECT_EQ(response, "0xF24002000021");
    EXPECT_TRUE(log.contains("VEXALD Failed to send request frame"));
}

TEST_F(SessionTest, AnyDifferingByteOfTheRequestAnswerIsARefusal) {
    const QByteArray right = QByteArray::fromHex("F240020000212A");
    for (int i = 0; i < right.size(); ++i) {
        scripted_ports::reset();
        answer({"F2E0040078012C45BB"});
        QByteArray wrong = right;
        wrong[i] = static_cast<char>(wrong[i] ^ 0x01);
        scripted_ports::answers.push_back(wrong);
        VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
        std::string response;
        EXPECT_EQ(session.operate(response), 4) << i;
    }
}

TEST_F(SessionTest, TheAnswerToTheRequestIsShownInHexadecimal) {
    answer({"F2E0040078012C45BB", "020A"});
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    std::string response;
    EXPECT_EQ(session.operate(response), 4);
    EXPECT_EQ(response, "0x020A");
}

TEST_F(SessionTest, NoAnswerToTheRequestIsShownAsSuch) {
    answer({"F2E0040078012C45BB"});
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    std::string response;
    EXPECT_EQ(session.operate(response), 4);
    EXPECT_EQ(response, "0x");
}

TEST_F(SessionTest, TheRequestExchangeIsLogged) {
    answer({"020A"});
    VEXAUsbConnector session(terminal(), VEXADbManager(), 2);
    bool answered = false;
    (void)session.initializeConnection(answered);
    answer({"F241"});
    std::string response;
    const LogCapture log;
    EXPECT_FALSE(session.sendRequestFrame(QByteArray::fromHex("2F40"), response));
    EXPECT_EQ(log.lines(),
              Lines({"VEXALD => VEXAUsbConnector::sendRequestFrame",
                     "VEXALD Request message : number of bytes = 2", "VEXALD    Byte sent 0 : 2F",
                     "VEXALD    Byte sent 1 : 40", "VEXALD Request response : number of bytes = 2",
                     "VEXALD    Byte 0 : F2", "VEXALD    TRUE", "VEXALD    Byte 1 : 41",
                     "VEXALD    FALSE", "VEXALD Failed to send request frame",
                     "VEXALD <= VEXAUsbConnector::sendRequestFrame"}));
}

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

TEST_F(EndTest, WhatFollowsTheThreeBytesIsNotRead) {
    EXPECT_EQ(ending("05000000"), "acknowledged");
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

TEST_F(SessionTest, ClosingWithoutAPortSucceeds) {
    VEXAUsbConnector session(terminal(), VEXADbManager(), 2);
    EXPECT_TRUE(session.closeConnection());
    EXPECT_TRUE(scripted_ports::events.empty());
}

TEST_F(SessionTest, ClosingPassesOnThePortsResult) {
    VEXAUsbConnector session(terminal(), VEXADbManager(), 2);
    bool answered = false;
    (void)session.initializeConnection(answered);
    EXPECT_TRUE(session.closeConnection());
    scripted_ports::closingSucceeds = false;
    EXPECT_FALSE(session.closeConnection());
}

TEST_F(SessionTest, ADefaultSessionCannotLoad) {
    VEXAUsbConnector session;
    std::string response;
    QString nack;
    EXPECT_EQ(session.operate(response), 1);
    EXPECT_EQ(session.sendDataFrame(nack), 9);
    EXPECT_FALSE(session.sendEndingFrame());
    EXPECT_TRUE(session.closeConnection());
    EXPECT_EQ(session.getProgress(), 0);
    EXPECT_TRUE(scripted_ports::exchanges.empty());
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

} // namespace

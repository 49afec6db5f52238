// The request frame: what it carries, and which answers accept it. All sessions use PAD 2.

#include "tests/unit/session_fixture.h"

namespace {

using Lines = std::vector<std::string>;

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

} // namespace

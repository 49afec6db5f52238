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

} // namespace

// The log of whole runs.

#include "tests/program/program_test.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <unistd.h>

namespace {

class LogFileTest : public ProgramTest {
protected:
    QString logFile() const { return path("log/logVEXA.txt"); }
};

TEST_F(LogFileTest, ALoadIsTracedFromTheConfigurationToTheEnd) {
    makeTestDatabase(kSampleSize);
    switchLogOn();
    ASSERT_EQ(chargerWithTerminal({"test.db", "/dev/ttyACM0"}).status, 0);
    QStringList expected = QString::fromUtf8(withVendorId(readFile(VEXA_TEST_DATA "/load.log")))
                               .split('\n', Qt::SkipEmptyParts);
    QStringList lines = logLines(logFile());
    lines.replaceInStrings(QRegularExpression("^VEXALD Handler : [0-9]+$"), "VEXALD Handler : N");
    lines.replaceInStrings(path(""), "@FOLDER@/");
    for (int i = 0; i < qMin(lines.size(), expected.size()); ++i) {
        ASSERT_EQ(lines[i], expected[i]) << "line " << i + 1;
    }
    EXPECT_EQ(lines.size(), expected.size());
}

TEST_F(LogFileTest, EveryStartEmptiesIt) {
    switchLogOn();
    ASSERT_EQ(charger({"-?"}).status, 11);
    const int lines = logLines(logFile()).size();
    ASSERT_EQ(charger({"-?"}).status, 11);
    EXPECT_EQ(logLines(logFile()).size(), lines);
}

TEST_F(LogFileTest, WrongArgumentsAreLoggedAsErrors) {
    switchLogOn();
    (void)charger({"x"});
    EXPECT_TRUE(logLines(logFile()).contains(
        "VEXALD    Two arguments are passed. Second argument : x, not -?"));
    (void)charger({"a", "b", "c", "d"});
    EXPECT_TRUE(logLines(logFile()).contains("VEXALD    Invalid number of arguments"));
    makeTestDatabase(4096);
    (void)charger({"test.db", "b", "15"});
    EXPECT_TRUE(
        logLines(logFile()).contains("VEXALD    Invalid PAD number, it must be between 1 and 14"));
    (void)charger({"test.db", "b"});
    EXPECT_TRUE(logLines(logFile()).contains("VEXALD Device not found on the defined port"));
}

TEST_F(LogFileTest, ADotPutsItIntoTheHomeFolder) {
    configure(defaultConfig().replace("&LogOption=0", "&LogOption=1"));
    ASSERT_EQ(charger({"-?"}).status, 11);
    EXPECT_FALSE(
        logLines(path("home/Library/Application Support/VEXACharger/logVEXA.txt")).isEmpty());
}

TEST_F(LogFileTest, ALongLoadRotatesIt) {
    makeTestDatabase(67108864);
    switchLogOn();
    ASSERT_EQ(chargerWithTerminal({"test.db", "/dev/ttyACM0"}).status, 0);
    const qint64 full = 1048576;
    const qint64 old = QFileInfo(path("log/logVEXA.old")).size();
    EXPECT_GE(old, full);
    EXPECT_LT(old, full + 600);
    EXPECT_LT(QFileInfo(logFile()).size(), full);
    EXPECT_EQ(logLines(logFile()).last(), "VEXALD <= analyzeArgs");
    EXPECT_EQ(QDir(path("log")).entryList(QDir::Files),
              QStringList({"logVEXA.old", "logVEXA.txt"}));
}

TEST_F(LogFileTest, AFolderThatCannotBeMadeMeansNoLog) {
    makeTestDatabase(kSampleSize);
    for (const char* folder : {"/proc/nowhere", "/dev/null", "/no/such/parent"}) {
        configure(defaultConfig()
                      .replace("&LogOption=0", "&LogOption=1")
                      .replace("&LogPath=.", QByteArray("&LogPath=") + folder));
        EXPECT_EQ(chargerWithTerminal({"test.db", "/dev/ttyACM0"}).status, 0) << folder;
    }
}

TEST_F(LogFileTest, AFullDiskDoesNotDisturbTheLoad) {
    makeTestDatabase(kSampleSize);
    switchLogOn();
    ASSERT_TRUE(QDir().mkdir(path("log")));
    const QString load = quoted(commandWithTerminal({"test.db", "/dev/ttyACM0"}));
    const QStringList mounting = withMountsOfItsOwn();
    if (mounting.isEmpty()) {
        GTEST_SKIP() << "neither user namespaces nor root: there is no small disk to fill";
    }
    const Outcome outcome =
        run(mounting + QStringList({"sh", "-c",
                                    "mount -t tmpfs -o size=8k tmpfs log && { " + load +
                                        "; echo $? >status; "
                                        "wc -c <log/logVEXA.txt >size; }"}));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(readFile(path("status")), "0\n");
    EXPECT_EQ(readFile(path("size")), "8192\n");
    EXPECT_EQ(stored() == readFile(path("test.db")), true);
}

} // namespace

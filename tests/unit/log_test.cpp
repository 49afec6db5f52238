#include "app/log.h"
#include "tests/support/files.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <regex>
#include <sys/stat.h>
#include <thread>

namespace {

constexpr qint64 kFullFileSize = 1048576;

class LogTest : public testing::Test {
protected:
    LogTest() { qputenv("HOME", m_home.path().toUtf8()); }
    ~LogTest() override {
        VEXA_logstop();
        delete[] g_logFileName;
        g_logFileName = nullptr;
        g_logLevel = 31;
    }

    QString path(const QString& name) const { return m_home.path() + "/" + name; }

    /// Opens a log of a name of the test's choice, as full as the test wants it.
    void openLog(const QString& name, qint64 size) {
        ASSERT_TRUE(writeFile(path(name), QByteArray(static_cast<int>(size), '.')));
        g_logFileName = new char[kLogFileNameSize]();
        std::strcpy(g_logFileName, path(name).toUtf8().constData());
        g_logfileStream = std::fopen(g_logFileName, "r+");
        ASSERT_NE(g_logfileStream, nullptr);
        ASSERT_EQ(std::fseek(g_logfileStream, 0, SEEK_END), 0);
    }

    QTemporaryDir m_home;
};

TEST_F(LogTest, BeforeItIsOpenACallWritesNothing) {
    VEXALog(kLogError, "nobody reads this %d", 1);
    EXPECT_EQ(g_logfileStream, nullptr);
    EXPECT_EQ(QDir(m_home.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList());
}

TEST_F(LogTest, WithAnotherOptionThanOneNoFileIsMade) {
    for (const char* option : {"0", "1 ", " 1", "", "11", "yes"}) {
        VEXA_logstart(option, path("log").toUtf8().constData());
        EXPECT_EQ(g_logfileStream, nullptr) << option;
        EXPECT_FALSE(QFile::exists(path("log"))) << option;
        EXPECT_NE(g_logFileName, nullptr) << option;
    }
}

TEST_F(LogTest, TheFolderIsMadeAndTheFileEmptied) {
    ASSERT_TRUE(QDir().mkdir(path("log")));
    ASSERT_TRUE(writeFile(path("log/logVEXA.txt"), "of an earlier run\n"));
    VEXA_logstart("1", path("log").toUtf8().constData());
    EXPECT_STREQ(g_logFileName, path("log/logVEXA.txt").toUtf8().constData());
    EXPECT_EQ(
        logLines(path("log/logVEXA.txt")),
        QStringList({"VEXALD parse_variable : g_logfileStream = " + path("log/logVEXA.txt")}));
}

TEST_F(LogTest, TheFolderIsMadeWithRightsForTheGroup) {
    const mode_t before = umask(0);
    VEXA_logstart("1", path("log").toUtf8().constData());
    (void)umask(before);
    struct stat status {};
    ASSERT_EQ(stat(path("log").toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0775U);
}

TEST_F(LogTest, ADotMeansTheFolderInTheHomeWhichIsMade) {
    VEXA_logstart("1", ".");
    VEXALog(kLogInfo, "there");
    EXPECT_EQ(logLines(path("Library/Application Support/VEXACharger/logVEXA.txt")),
              QStringList({"VEXALD parse_variable : g_logfileStream = " +
                               path("Library/Application Support/VEXACharger/logVEXA.txt"),
                           "VEXALD there"}));
}

TEST_F(LogTest, WithoutAHomeADotLeavesTheLogClosed) {
    qunsetenv("HOME");
    VEXA_logstart("1", ".");
    EXPECT_EQ(g_logfileStream, nullptr);
}

TEST_F(LogTest, AHomeThatIsMissingIsNotMade) {
    qputenv("HOME", path("nowhere").toUtf8());
    VEXA_logstart("1", ".");
    EXPECT_EQ(g_logfileStream, nullptr);
    EXPECT_FALSE(QFile::exists(path("nowhere")));
}

TEST_F(LogTest, APipeInThePlaceOfTheFileLeavesTheLogClosed) {
    ASSERT_TRUE(QDir().mkdir(path("log")));
    ASSERT_EQ(mkfifo(path("log/logVEXA.txt").toUtf8().constData(), 0666), 0);
    VEXA_logstart("1", path("log").toUtf8().constData());
    EXPECT_EQ(g_logfileStream, nullptr);
}

TEST_F(LogTest, AFolderWhoseParentIsMissingLeavesTheLogClosed) {
    VEXA_logstart("1", path("no/such/folder").toUtf8().constData());
    EXPECT_EQ(g_logfileStream, nullptr);
    EXPECT_FALSE(QFile::exists(path("no")));
    VEXALog(kLogInfo, "nothing happens");
}

TEST_F(LogTest, AFileInThePlaceOfTheFolderLeavesTheLogClosed) {
    ASSERT_TRUE(writeFile(path("log"), "a file"));
    VEXA_logstart("1", path("log").toUtf8().constData());
    EXPECT_EQ(g_logfileStream, nullptr);
    EXPECT_EQ(readFile(path("log")), "a file");
}

TEST_F(LogTest, AFolderNameBeyondTheBufferLeavesTheLogClosed) {
    const std::string folder = path(QString(200, 'x')).toStdString() + "/" + std::string(100, 'y');
    VEXA_logstart("1", folder.c_str());
    EXPECT_EQ(g_logfileStream, nullptr);
}

TEST_F(LogTest, OpenedAgainTheLogGoesOnInTheNewFile) {
    VEXA_logstart("1", path("first").toUtf8().constData());
    VEXA_logstart("1", path("second").toUtf8().constData());
    VEXALog(kLogInfo, "here");
    EXPECT_EQ(logLines(path("first/logVEXA.txt")).last(),
              "VEXALD parse_variable : g_logDir = " + path("second"));
    EXPECT_EQ(
        logLines(path("second/logVEXA.txt")),
        QStringList({"VEXALD parse_variable : g_logfileStream = " + path("second/logVEXA.txt"),
                     "VEXALD here"}));
}

TEST_F(LogTest, ALineCarriesTheTimePrefixMarkerAndMessage) {
    VEXA_logstart("1", path("log").toUtf8().constData());
    VEXALog(kLogEntry, "config_from_file");
    const std::string line = readFile(path("log/logVEXA.txt")).split('\n')[1].toStdString();
    EXPECT_TRUE(std::regex_match(line, std::regex("[0-3][0-9]/[01][0-9]/20[0-9][0-9] "
                                                  "[0-2][0-9]h[0-5][0-9]m[0-6][0-9]s - "
                                                  "VEXALD => config_from_file")))
        << line;
}

TEST_F(LogTest, EachLevelHasItsMarker) {
    const LogCapture log;
    VEXALog(kLogError, "Could not open database file");
    VEXALog(kLogEntry, "config_from_file");
    VEXALog(kLogExit, "config_from_file");
    VEXALog(kLogInfo, "Valid parameter");
    VEXALog(kLogBytes, "Byte sent %d : %02X", 3, 2);
    EXPECT_EQ(log.lines(), std::vector<std::string>({
                               "VEXALD    Could not open database file",
                               "VEXALD => config_from_file",
                               "VEXALD <= config_from_file",
                               "VEXALD Valid parameter",
                               "VEXALD    Byte sent 3 : 02",
                           }));
}

TEST_F(LogTest, NestedCallsAreNotIndented) {
    const LogCapture log;
    {
        const FunctionTrace a("a");
        const FunctionTrace b("b");
        const FunctionTrace c("c");
        VEXALog(kLogInfo, "in c");
    }
    EXPECT_EQ(log.lines(),
              std::vector<std::string>({"VEXALD => a", "VEXALD => b", "VEXALD => c", "VEXALD in c",
                                        "VEXALD <= c", "VEXALD <= b", "VEXALD <= a"}));
}

TEST_F(LogTest, ALevelOutsideTheMaskIsNotWritten) {
    const LogCapture log;
    g_logLevel = kLogError | kLogInfo;
    VEXALog(kLogEntry, "hidden");
    VEXALog(kLogBytes, "hidden");
    VEXALog(kLogError, "shown");
    EXPECT_EQ(log.lines(), std::vector<std::string>({"VEXALD    shown"}));
}

TEST_F(LogTest, EveryLineIsInTheFileWhenTheCallReturns) {
    VEXA_logstart("1", path("log").toUtf8().constData());
    VEXALog(kLogInfo, "flushed");
    EXPECT_EQ(logLines(path("log/logVEXA.txt")).last(), "VEXALD flushed");
}

TEST_F(LogTest, AFilteredCallFlushesWhatIsWaiting) {
    VEXA_logstart("1", path("log").toUtf8().constData());
    (void)std::fputs("waiting", g_logfileStream);
    g_logLevel = kLogError;
    VEXALog(kLogInfo, "hidden");
    EXPECT_TRUE(readFile(path("log/logVEXA.txt")).endsWith("waiting"));
}

TEST_F(LogTest, AMessageBeyondTheBufferIsCut) {
    const LogCapture log;
    VEXALog(kLogError, "%s", std::string(2000, 'x').c_str());
    // 511 characters of line: prefix 7, marker 3, message 501.
    EXPECT_EQ(log.lines(), std::vector<std::string>({"VEXALD    " + std::string(501, 'x')}));
}

TEST_F(LogTest, TheLineThatFillsTheFileIsItsLast) {
    // A line of the message "x" has 32 bytes: a time of 20, " - VEXALD x" and a line feed.
    openLog("logVEXA.txt", kFullFileSize - 33);
    ASSERT_TRUE(writeFile(path("logVEXA.old"), "of an earlier rotation"));
    VEXALog(kLogInfo, "x");
    EXPECT_EQ(QFileInfo(path("logVEXA.txt")).size(), kFullFileSize - 1);
    VEXALog(kLogInfo, "last");
    EXPECT_EQ(QFileInfo(path("logVEXA.old")).size(), kFullFileSize - 1 + 35);
    EXPECT_EQ(logLines(path("logVEXA.old")).last(), "VEXALD last");
    EXPECT_EQ(QFileInfo(path("logVEXA.txt")).size(), 0);
    VEXALog(kLogInfo, "first");
    EXPECT_EQ(logLines(path("logVEXA.txt")), QStringList({"VEXALD first"}));
}

TEST_F(LogTest, AFileOfJustTheLimitIsFull) {
    openLog("logVEXA.txt", kFullFileSize - 32);
    VEXALog(kLogInfo, "x");
    EXPECT_EQ(QFileInfo(path("logVEXA.old")).size(), kFullFileSize);
}

TEST_F(LogTest, AFilteredCallStillRotates) {
    openLog("logVEXA.txt", kFullFileSize);
    g_logLevel = kLogError;
    VEXALog(kLogInfo, "hidden");
    EXPECT_EQ(QFileInfo(path("logVEXA.old")).size(), kFullFileSize);
}

TEST_F(LogTest, ANameWithoutADotGetsTheExtensionAppended) {
    ASSERT_TRUE(QDir().mkdir(path("with.dot")));
    openLog("with.dot/log", kFullFileSize);
    VEXALog(kLogInfo, "last");
    EXPECT_EQ(logLines(path("with.dot/log.old")).last(), "VEXALD last");
    EXPECT_EQ(QFileInfo(path("with.dot/log")).size(), 0);
}

TEST_F(LogTest, ANameThatBeginsWithItsOnlyDotGetsTheExtensionAppended) {
    ASSERT_TRUE(QDir::setCurrent(m_home.path()));
    openLog(".log", kFullFileSize);
    std::strcpy(g_logFileName, ".log");
    VEXALog(kLogInfo, "last");
    EXPECT_EQ(logLines(path(".log.old")).last(), "VEXALD last");
}

TEST_F(LogTest, AnOldLogIsReplaced) {
    openLog("logVEXA.txt", kFullFileSize);
    ASSERT_TRUE(writeFile(path("logVEXA.old"), "of an earlier rotation"));
    VEXALog(kLogInfo, "last");
    EXPECT_EQ(logLines(path("logVEXA.old")).last(), "VEXALD last");
    EXPECT_FALSE(readFile(path("logVEXA.old")).contains("earlier"));
}

TEST_F(LogTest, AnOldLogThatCannotBeReplacedCostsTheFullOneOnly) {
    openLog("logVEXA.txt", kFullFileSize);
    ASSERT_TRUE(QDir().mkpath(path("logVEXA.old/in the way")));
    VEXALog(kLogInfo, "lost");
    VEXALog(kLogInfo, "first");
    EXPECT_EQ(logLines(path("logVEXA.txt")), QStringList({"VEXALD first"}));
}

TEST_F(LogTest, AFullFileWithoutANameIsNotRotated) {
    openLog("logVEXA.txt", kFullFileSize);
    delete[] g_logFileName;
    g_logFileName = nullptr;
    VEXALog(kLogInfo, "more");
    EXPECT_GT(QFileInfo(path("logVEXA.txt")).size(), kFullFileSize);
}

TEST_F(LogTest, AFailedReopeningEndsTheLog) {
    openLog("logVEXA.txt", kFullFileSize);
    std::strcpy(g_logFileName, path("gone/logVEXA.txt").toUtf8().constData());
    VEXALog(kLogInfo, "last");
    EXPECT_EQ(g_logfileStream, nullptr);
    VEXALog(kLogInfo, "nothing happens");
}

TEST_F(LogTest, AFullDiskIsSurvived) {
    g_logfileStream = std::fopen("/dev/full", "w");
    ASSERT_NE(g_logfileStream, nullptr);
    for (int i = 0; i < 1000; ++i) {
        VEXALog(kLogInfo, "does not fit");
    }
    EXPECT_NE(g_logfileStream, nullptr);
}

TEST_F(LogTest, StoppedTwiceItStaysClosed) {
    VEXA_logstart("1", path("log").toUtf8().constData());
    VEXA_logstop();
    VEXA_logstop();
    EXPECT_EQ(g_logfileStream, nullptr);
    VEXALog(kLogInfo, "nothing happens");
}

TEST_F(LogTest, TwoThreadsNeverMixTheirLines) {
    VEXA_logstart("1", path("log").toUtf8().constData());
    constexpr int kLines = 2000;
    const auto write = [](const char* text) {
        for (int i = 0; i < kLines; ++i) {
            VEXALog(kLogInfo, "%s", text);
        }
    };
    std::thread worker(write, "worker");
    write("window");
    worker.join();
    const QStringList lines = logLines(path("log/logVEXA.txt"));
    EXPECT_EQ(lines.count("VEXALD worker"), kLines);
    EXPECT_EQ(lines.count("VEXALD window"), kLines);
}

TEST_F(LogTest, ItCanBeStoppedWhileTheWorkerLogs) {
    VEXA_logstart("1", path("log").toUtf8().constData());
    std::thread worker([] {
        for (int i = 0; i < 20000; ++i) {
            VEXALog(kLogInfo, "still at work");
        }
    });
    VEXA_logstop();
    worker.join();
    EXPECT_EQ(g_logfileStream, nullptr);
}

} // namespace

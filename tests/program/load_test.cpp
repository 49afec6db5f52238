// Whole loads by the unchanged program: output, exit status, frames, stored bytes.

#include "tests/program/program_test.h"

#include <QDir>
#include <QProcess>

namespace {

class LoadTest : public ProgramTest {
protected:
    /// Waits for the terminal's last word for as long as it takes: the wait for a small file is so
    /// short that a busy machine could miss it.
    void waitPatiently() { m_environment << "LD_PRELOAD=" VEXA_PATIENT_SELECT; }

    void expectStored(int pad = 2, int terminal = 0) {
        EXPECT_EQ(stored(pad, terminal) == readFile(path("test.db")), true)
            << "the stored bytes differ";
    }
};

const QByteArray kSucceeded = "\nLoading succeeded\n\n" + resultLines(0);
const QByteArray kBegun = kStarted + kInitSucceeded;

TEST_F(LoadTest, ASampleOfEightBlocks) {
    makeTestDatabase(kSampleSize);
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0", "2"});
    EXPECT_EQ(outcome.out, loadHead("test.db") + kBegun +
                               "\nLoading progress : 50 %\nLoading progress : 100 %" + kAllSent +
                               kSucceeded);
    EXPECT_EQ(outcome.status, 0);
    expectStored();
    const QByteArray hexadecimal = readFile(path("test.db")).left(10).toHex(' ').toUpper();
    const QStringList all = frames();
    EXPECT_EQ(all.mid(0, 6),
              QStringList({"> 2F C0 04 00 78 01 2C B8 E4", "< F2 E0 04 00 78 01 2C 45 BB",
                           "> 2F 40 17 05 01 01 60 0D 80 03 03 C0 00", "< F2 40 02 00 00 21 2A",
                           "> 01 78 00 " + hexadecimal.left(29), "< 05"}));
    EXPECT_EQ(all.size(), 22);
    EXPECT_EQ(all.mid(20), QStringList({"> 02 00 00", "< 05 00 00"}));
    EXPECT_TRUE(readFile(path("frames"))
                    .contains("> 2F 40 17 05 01 01 60 0D 80 03 03 C0 00 81 05 61 6C 70 68 61 82 04 "
                              "62 65 74 61 CB A5\n"));
}

TEST_F(LoadTest, EachPadIsAddressedAndStored) {
    makeTestDatabase(kSampleSize);
    const struct {
        const char* pad;
        int number;
        const char* init;
        const char* answer;
    } pads[] = {{"1", 1, "> 1F C0 04 00 78 01 2C B8 E4", "< F1 E0 04 00 78 01 2C 45 BB"},
                {"2", 2, "> 2F C0 04 00 78 01 2C B8 E4", "< F2 E0 04 00 78 01 2C 45 BB"},
                {"14", 14, "> EF C0 04 00 78 01 2C B8 E4", "< FE E0 04 00 78 01 2C 45 BB"},
                {"3x", 3, "> 3F C0 04 00 78 01 2C B8 E4", "< F3 E0 04 00 78 01 2C 45 BB"}};
    for (const auto& [pad, number, init, answer] : pads) {
        const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0", pad});
        EXPECT_EQ(outcome.status, 0) << pad;
        EXPECT_TRUE(outcome.out.endsWith(kSucceeded)) << pad;
        EXPECT_EQ(frames().mid(0, 2), QStringList({init, answer}));
        expectStored(number);
    }
    EXPECT_EQ(QDir(path("store/ttyACM0")).entryList(QDir::Files),
              QStringList({"pad-01.db", "pad-02.db", "pad-03.db", "pad-14.db"}));
}

TEST_F(LoadTest, AFileOf0Bytes) {
    ASSERT_TRUE(writeFile(path("test.db"), ""));
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0"});
    EXPECT_EQ(outcome.out, loadHead("test.db") + kBegun + kAllSent + kSucceeded);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(frames(), QStringList({"> 2F C0 04 00 78 01 2C B8 E4", "< F2 E0 04 00 78 01 2C 45 BB",
                                     "> 2F 40 07 05 01 01 60 00 80 00 E0 91",
                                     "< F2 40 02 00 00 21 2A", "> 02 00 00", "< 05 00 00"}));
    EXPECT_TRUE(QFile::exists(path("store/ttyACM0/pad-02.db")));
    expectStored();
}

TEST_F(LoadTest, AFileOf0BytesWaitsAsLongAsTheTerminalTakes) {
    ASSERT_TRUE(writeFile(path("test.db"), ""));
    const Outcome outcome =
        chargerWithTerminal({"test.db", "/dev/ttyACM0"}, {"--fault", "end:late=3500"});
    EXPECT_EQ(outcome.out, loadHead("test.db") + kBegun + kAllSent + kSucceeded);
}

TEST_F(LoadTest, AFileOf512Bytes) {
    ASSERT_TRUE(makeDatabase(path("test.db"), {"PRAGMA page_size=512", "PRAGMA user_version=7"}));
    ASSERT_EQ(QFileInfo(path("test.db")).size(), 512);
    waitPatiently();
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0"});
    EXPECT_EQ(outcome.out,
              loadHead("test.db") + kBegun + "\nLoading progress : 100 %" + kAllSent + kSucceeded);
    EXPECT_TRUE(readFile(path("frames")).contains("> 2F 40 09 05 01 01 60 00 80 02 02 00 6A 6B\n"));
    expectStored();
    // The waits that the program asked for: 3 s for each frame, 9 ms for the last.
    EXPECT_EQ(readFile(path("waits")), "3000000\n3000000\n3000000\n9000\n");
}

TEST_F(LoadTest, AFileOf30720Bytes) {
    makeTestDatabase(30720);
    waitPatiently();
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0"});
    EXPECT_EQ(outcome.out,
              loadHead("test.db") + kBegun + "\nLoading progress : 100 %" + kAllSent + kSucceeded);
    EXPECT_EQ(frames().size(), 8);
    expectStored();
    EXPECT_EQ(readFile(path("waits")), "3000000\n3000000\n3000000\n585000\n");
}

TEST_F(LoadTest, AFileOf30721Bytes) {
    makeTestDatabase(30721);
    waitPatiently();
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0"});
    // 30720 * 100 / 30721 is 99, which is no multiple of ten.
    EXPECT_EQ(outcome.out,
              loadHead("test.db") + kBegun + "\nLoading progress : 100 %" + kAllSent + kSucceeded);
    EXPECT_EQ(frames().mid(6), QStringList({"> 01 00 01 78", "< 05", "> 02 00 00", "< 05 00 00"}));
    expectStored();
}

TEST_F(LoadTest, AFileOf1MiB) {
    makeTestDatabase(1048576);
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0"});
    // 35 blocks: of 30720 * 100 * n / 1048576 for n from 1 to 34 these are multiples of ten.
    EXPECT_EQ(outcome.out, loadHead("test.db") + kBegun +
                               "\nLoading progress : 20 %\nLoading progress : 70 %"
                               "\nLoading progress : 90 %\nLoading progress : 100 %" +
                               kAllSent + kSucceeded);
    expectStored();
}

TEST_F(LoadTest, AFileOf64MiB) {
    makeTestDatabase(67108864);
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0"});
    EXPECT_EQ(outcome.status, 0);
    // Beyond 21474836 bytes the percentage wraps, so that it passes through 0 and ends below it.
    EXPECT_EQ(outcome.out, loadHead("test.db") + kBegun +
                               "\nLoading progress : 10 %\nLoading progress : 20 %"
                               "\nLoading progress : 30 %\nLoading progress : -30 %"
                               "\nLoading progress : -20 %\nLoading progress : -10 %"
                               "\nLoading progress : 0 %\nLoading progress : 10 %"
                               "\nLoading progress : 20 %\nLoading progress : 30 %"
                               "\nLoading progress : -30 %" +
                               kAllSent + kSucceeded);
    expectStored();
}

TEST_F(LoadTest, TheNamedOneOfSeveralTerminalsIsLoaded) {
    makeTestDatabase(kSampleSize);
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM2"}, {"--devices", "4"});
    EXPECT_EQ(outcome.out.left(loadHead("test.db", "/dev/ttyACM2").size()),
              loadHead("test.db", "/dev/ttyACM2"));
    EXPECT_EQ(outcome.status, 0);
    expectStored(2, 2);
    EXPECT_EQ(QDir(path("store")).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
              QStringList({"ttyACM2"}));
}

TEST_F(LoadTest, AnotherTerminalIsLoadedOnceItsIdentifiersAreConfigured) {
    makeTestDatabase(kSampleSize);
    configure(defaultConfig().replace(withVendorId("&VID=f055\n&PID=0012\n&VID=f055\n&PID=0012"),
                                      "&VID=0403\n&PID=6001\n&VID=1A86\n&PID=7523"));
    const QStringList arguments = {"test.db", "/dev/ttyACM0"};
    EXPECT_EQ(
        chargerWithTerminal(arguments, {"--vendor-id", "1a86", "--product-id", "7523"}).status, 0);
    EXPECT_EQ(chargerWithTerminal(arguments).status, 13);
}

TEST_F(LoadTest, NamesWithBlanksAccentsAndFormatsAreLoaded) {
    ASSERT_TRUE(QDir().mkpath(path("données é/%s %n")));
    makeTestDatabase(kSampleSize);
    const QByteArray name = "données é/%s %n/base é.db";
    ASSERT_TRUE(QFile::copy(path("test.db"), path(QString::fromUtf8(name))));
    const Outcome outcome = chargerWithTerminal({QString::fromUtf8(name), "/dev/ttyACM0"});
    EXPECT_EQ(outcome.out.left(loadHead(name).size()), loadHead(name));
    EXPECT_EQ(outcome.status, 0);
    expectStored();
}

TEST_F(LoadTest, TheDatabaseIsLeftAsItWas) {
    makeTestDatabase(kSampleSize);
    const QByteArray before = readFile(path("test.db"));
    (void)chargerWithTerminal({"test.db", "/dev/ttyACM0"});
    EXPECT_EQ(readFile(path("test.db")) == before, true);
    EXPECT_EQ(QDir(path("")).entryList({"test.db*"}, QDir::Files), QStringList({"test.db"}));
}

TEST_F(LoadTest, ADatabaseInWalModeIsLeftAloneToo) {
    makeTestDatabase(kSampleSize);
    ASSERT_EQ(run({"sqlite3", "test.db", "PRAGMA journal_mode=WAL"}).status, 0);
    EXPECT_EQ(chargerWithTerminal({"test.db", "/dev/ttyACM0"}).status, 0);
    EXPECT_EQ(QDir(path("")).entryList({"test.db*"}, QDir::Files), QStringList({"test.db"}));
    expectStored();
}

TEST_F(LoadTest, AReadOnlyDatabaseInAReadOnlyFolderIsLoaded) {
    ASSERT_TRUE(QDir().mkdir(path("locked")));
    makeTestDatabase(kSampleSize);
    ASSERT_TRUE(QFile::rename(path("test.db"), path("locked/test.db")));
    const auto readable = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
    ASSERT_TRUE(QFile::setPermissions(path("locked/test.db"), readable));
    ASSERT_TRUE(QFile::setPermissions(path("locked"), readable | QFile::ExeOwner | QFile::ExeGroup |
                                                          QFile::ExeOther));
    const Outcome outcome =
        run(asOrdinaryUser(commandWithTerminal({"locked/test.db", "/dev/ttyACM0"})));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(stored() == readFile(path("locked/test.db")), true);
    (void)QFile::setPermissions(path("locked"), readable | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(LoadTest, AnyLocaleAndNoDisplayWillDo) {
    makeTestDatabase(kSampleSize);
    for (const char* locale :
         {"LC_ALL=C", "LC_ALL=fr_FR.UTF-8", "LC_ALL=de_DE.ISO-8859-1", "LC_ALL=nonsense"}) {
        m_environment = QStringList({locale, "DISPLAY=:99", "WAYLAND_DISPLAY=none"});
        const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0"});
        EXPECT_EQ(outcome.status, 0) << locale;
        EXPECT_TRUE(outcome.out.endsWith(kSucceeded)) << locale;
    }
}

TEST_F(LoadTest, EachLineIsSeenWhenItIsPrinted) {
    makeTestDatabase(kSampleSize);
    const QStringList command =
        commandWithTerminal({"test.db", "/dev/ttyACM0"}, {"--fault", "data:5:silence"});
    QProcess process;
    process.setWorkingDirectory(path(""));
    process.setEnvironment(environment());
    process.start(command.first(), command.mid(1));
    QByteArray out;
    while (!out.contains("\nLoading progress : 50 %") && process.waitForReadyRead()) {
        out += process.readAllStandardOutput();
    }
    EXPECT_TRUE(out.endsWith("\nLoading progress : 50 %"))
        << "the line came together with what follows it: " << out.constData();
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 14);
}

TEST_F(LoadTest, AReaderOfTheOutputThatGoesAwayDoesNotEndTheLoad) {
    makeTestDatabase(kSampleSize);
    const QString command = quoted(commandWithTerminal({"test.db", "/dev/ttyACM0"}));
    const Outcome outcome = run({"sh", "-c", "{ " + command + "; echo $? >status; } | true"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(readFile(path("status")), "0\n");
    expectStored();
}

TEST_F(LoadTest, AFullOutputDoesNotEndTheLoad) {
    makeTestDatabase(kSampleSize);
    const QString command = quoted(commandWithTerminal({"test.db", "/dev/ttyACM0"}));
    EXPECT_EQ(run({"sh", "-c", command + " >/dev/full"}).status, 0);
    expectStored();
    EXPECT_EQ(run({"sh", "-c", command + " >&-"}).status, 0);
    expectStored();
}

TEST_F(LoadTest, ALoadAfterALoadReplacesTheDatabase) {
    makeTestDatabase(kSampleSize);
    ASSERT_EQ(chargerWithTerminal({"test.db", "/dev/ttyACM0"}).status, 0);
    ASSERT_TRUE(QFile::remove(path("test.db")));
    makeTestDatabase(kSampleSize + 30720);
    ASSERT_EQ(chargerWithTerminal({"test.db", "/dev/ttyACM0"}).status, 0);
    expectStored();
}

TEST_F(LoadTest, TwoLoadsAtATimeDoNotDisturbEachOther) {
    makeTestDatabase(kSampleSize);
    const QString load = executable() + " test.db /dev/ttyACM";
    const QString both = load + "0 2 >one & " + load + "1 3 >two; first=$?; wait $! && exit $first";
    EXPECT_EQ(run(shellWithTerminal(both, {"--devices", "2"})).status, 0);
    EXPECT_TRUE(readFile(path("one")).endsWith(kSucceeded));
    EXPECT_TRUE(readFile(path("two")).endsWith(kSucceeded));
    expectStored(2, 0);
    expectStored(3, 1);
}

} // namespace

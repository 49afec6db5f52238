// Loads through PC/SC readers: the real daemon, with simulated terminals behind its readers.

#include "tests/program/program_test.h"

#include <QDir>
#include <QProcess>

namespace {

constexpr qint64 kLargestSize = 30717; // what fits into one exchange

const QByteArray kInitFailed = "\nCommunication initialization process failed\n";
const QByteArray kSent = "\nLoading progress : 100 %" + kAllSent;
const QByteArray kSucceeded = kInitSucceeded + kSent + "\nLoading succeeded\n\n";
const QByteArray kNoEnd = kInitSucceeded + kSent + "\nNo response for the ending frame\n";
const QByteArray kNoAnswer = "\nNo response from the terminal";
const QByteArray kNoDataAnswer = kInitSucceeded + kNoAnswer + "\nTimeout when sending data\n";
const QByteArray kDataRefused = kInitSucceeded + "\nNo response for the ending frame\n";
const QByteArray kRefused = "\nUpdate request failed with returned message : ";
const QByteArray kNotFound = "\nDevice not found on the defined port\n";

class PcscTest : public ProgramTest {
protected:
    void SetUp() override {
        if (QProcess::execute(VEXA_READER,
                              {"--no-daemon", "--store", path("store"), "--", "true"}) != 0) {
            GTEST_SKIP() << "a PC/SC daemon of our own needs user namespaces or root's rights";
        }
    }

    QStringList commandWithReader(const QStringList& arguments,
                                  const QStringList& readerOptions = {}) const {
        return QStringList({VEXA_READER, "--store", path("store"), "--exchanges", path("exchanges"),
                            "--trace", path("trace"), "--daemon-log", path("daemon-log")}) +
               readerOptions + QStringList({"--", executable()}) + arguments;
    }

    Outcome chargerWithReader(const QStringList& readerOptions = {}) {
        return run(commandWithReader({"test.db", "PCSC"}, readerOptions));
    }

    /// What a load is expected to say, from "Loading has been started" on.
    static QByteArray output(const QByteArray& told, int code) {
        return loadHead("test.db", "PCSC") + kStarted + told + resultLines(code);
    }

    QByteArray storedBehind(int reader, int pad = 2) const {
        return readFile(path("store") + QString::asprintf("/reader%d/pad-%02d.db", reader, pad));
    }

    void expectLoaded(const Outcome& outcome, int reader = 0) const {
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out, output(kSucceeded, 0));
        EXPECT_EQ(storedBehind(reader) == readFile(path("test.db")), true);
    }

    void expectNotFound(const Outcome& outcome) const {
        EXPECT_EQ(outcome.out, loadHead("test.db", "PCSC") + kNotFound + resultLines(13));
        EXPECT_EQ(outcome.status, 13);
    }

    bool storedNothingBehindReaders() const {
        return QDir(path("store/reader0")).entryList(QDir::Files).isEmpty();
    }

    /// The log's lines of the search for readers.
    QStringList searchLines() const {
        QStringList lines = logLines(path("log/logVEXA.txt"));
        const QString name = "VEXADeviceManager::findAllPCSCDevices";
        const int first = lines.indexOf("VEXALD => " + name);
        return lines.mid(first + 1, lines.indexOf("VEXALD <= " + name) - first - 1);
    }

    /// The escape exchanges, cut at 90 characters.
    QStringList exchanges() const {
        constexpr int kShown = 90;
        QStringList lines;
        for (const QByteArray& line : readFile(path("exchanges")).split('\n')) {
            lines << QString::fromLatin1(line.left(kShown));
        }
        lines.removeLast();
        return lines;
    }
};

TEST_F(PcscTest, ADatabaseOfTheLargestSizeIsLoaded) {
    makeTestDatabase(kLargestSize);
    expectLoaded(chargerWithReader());
    const QStringList lines = exchanges();
    ASSERT_EQ(lines.size(), 8);
    const QString head = "> reader0 42000000 capacity 65548 size ";
    EXPECT_EQ(lines[0], head + "10 11 2F C0 04 00 78 01 2C B8 E4");
    EXPECT_EQ(lines[1], "< 91 00 F2 E0 04 00 78 01 2C 45 BB");
    EXPECT_TRUE(lines[2].startsWith(head + "28 11 2F 40 16 05 01 01 60 0D"))
        << lines[2].toStdString();
    EXPECT_EQ(lines[3], "< 91 00 F2 40 02 00 00 21 2A");
    EXPECT_TRUE(lines[4].startsWith(head + "30721 11 01 77 FD 53 51 4C")) << lines[4].toStdString();
    EXPECT_EQ(lines[5], "< 91 00 05");
    EXPECT_EQ(lines[6], head + "4 11 02 00 00");
    EXPECT_EQ(lines[7], "< 91 00 05 00 00");
}

TEST_F(PcscTest, OneByteMoreIsTooMuch) {
    makeTestDatabase(kLargestSize + 1);
    switchLogOn();
    const Outcome outcome = chargerWithReader();
    EXPECT_EQ(outcome.out, output(kNoDataAnswer, 14));
    EXPECT_EQ(outcome.status, 14);
    EXPECT_TRUE(storedNothingBehindReaders());
    EXPECT_TRUE(logLines(path("log/logVEXA.txt"))
                    .contains("VEXALD    ExecuteCommand ERR Buffer too long : 30721 / max=30720"));
    EXPECT_EQ(exchanges().size(), 4); // initialisation and request
}

TEST_F(PcscTest, AFullBlockIsTooMuch) {
    makeTestDatabase(kSampleSize);
    const Outcome outcome = chargerWithReader();
    EXPECT_EQ(outcome.out, output(kNoDataAnswer, 14));
    EXPECT_EQ(outcome.status, 14);
    EXPECT_TRUE(storedNothingBehindReaders());
}

TEST_F(PcscTest, AnotherPadIsLoaded) {
    makeTestDatabase(kLargestSize);
    const Outcome outcome = run(commandWithReader({"test.db", "PCSC", "5"}));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(storedBehind(0, 5) == readFile(path("test.db")), true);
}

TEST_F(PcscTest, AnOrdinaryUserLoadsToo) {
    makeTestDatabase(kLargestSize);
    const QStringList probe = asOrdinaryUser({"unshare", "-rm", "true"});
    if (QProcess::execute(probe.first(), probe.mid(1)) != 0) {
        GTEST_SKIP() << "user namespaces are forbidden";
    }
    expectLoaded(run(asOrdinaryUser(commandWithReader({"test.db", "PCSC"}))));
}

TEST_F(PcscTest, ADaemonBesideThePathOfOrdinaryUsersIsFound) {
    EXPECT_EQ(
        run({"env", "PATH=/usr/bin:/bin", VEXA_READER, "--store", path("store"), "--", "true"})
            .status,
        0);
}

TEST_F(PcscTest, AFileThatCannotBeMadeIsAReasonNotToStart) {
    const Outcome outcome = runAndComplain(
        {VEXA_READER, "--store", path("store"), "--trace", "/no/such/trace", "--", "true"});
    EXPECT_EQ(outcome.status, 69);
    EXPECT_EQ(outcome.err, "vexa-reader: cannot write /no/such/trace\n");
}

TEST_F(PcscTest, AnInheritedSocketNameLeadsToNoOtherDaemon) {
    makeTestDatabase(kLargestSize);
    m_environment << "PCSCLITE_CSOCK_NAME=/no/such/socket";
    EXPECT_EQ(
        run({VEXA_READER, "--store", path("store"), "--", executable(), "test.db", "PCSC", "2"})
            .status,
        0);
    EXPECT_EQ(storedBehind(0, 2) == readFile(path("test.db")), true);
}

TEST_F(PcscTest, WithoutAStoreTheDatabasesLieInTheWorkingFolder) {
    makeTestDatabase(kLargestSize);
    EXPECT_EQ(run({VEXA_READER, "--", executable(), "test.db", "PCSC", "2"}).status, 0);
    EXPECT_EQ(readFile(path("terminal-store/reader0/pad-02.db")) == readFile(path("test.db")),
              true);
}

TEST_F(PcscTest, TwoDaemonsAtATimeDoNotMeet) {
    makeTestDatabase(kLargestSize);
    const QString one = "'" + commandWithReader({"test.db", "PCSC"}).join("' '") + "' >one";
    const QString two = QString(one).replace("/store", "/second").replace(">one", ">two");
    EXPECT_EQ(run({"sh", "-c", one + " & " + two + "; last=$?; wait $! && exit $last"}).status, 0);
    EXPECT_EQ(storedBehind(0) == readFile(path("test.db")), true);
    EXPECT_EQ(readFile(path("second/reader0/pad-02.db")) == readFile(path("test.db")), true);
}

TEST_F(PcscTest, WithoutADaemonNoReaderIsFound) {
    makeTestDatabase(kLargestSize);
    expectNotFound(chargerWithReader({"--no-daemon"}));
}

TEST_F(PcscTest, WithoutReadersNoneIsFound) {
    makeTestDatabase(kLargestSize);
    expectNotFound(chargerWithReader({"--readers", "0"}));
}

TEST_F(PcscTest, TheLastOfSixteenReadersIsFound) {
    makeTestDatabase(kLargestSize);
    switchLogOn();
    expectLoaded(chargerWithReader({"--reader", "Other", "--vendor", "Other company", "--readers",
                                    "14", "--reader", "Halvorin Terminal"}),
                 15);
    EXPECT_EQ(searchLines().filter("Not an Halvorin reader").size(), 15);
    EXPECT_TRUE(searchLines().contains("VEXALD found reader : Halvorin Terminal 0F 00 (VT-0001)"));
}

TEST_F(PcscTest, SlotsThatFollowEachOtherAreOneTerminal) {
    makeTestDatabase(kLargestSize);
    switchLogOn();
    expectLoaded(chargerWithReader({"--slots", "2", "--reader", "Second", "--serial", "B2"}));
    const QString slot = "VEXALD Another Slot of the same reader, continue...";
    EXPECT_EQ(
        searchLines(),
        QStringList({"VEXALD findAllPCSCDevices : Try reader Halvorin Terminal 00 00",
                     "VEXALD findAllPCSCDevices : serial number not in PCSC name",
                     "VEXALD found reader : Halvorin Terminal 00 00 (VT-0001)",
                     "VEXALD VEXADevice::VEXADevice",
                     "VEXALD findAllPCSCDevices : Try reader Halvorin Terminal 00 01", slot,
                     "VEXALD findAllPCSCDevices : Try reader Second 01 00",
                     "VEXALD findAllPCSCDevices : serial number not in PCSC name",
                     "VEXALD found reader : Second 01 00 (B2)", "VEXALD VEXADevice::VEXADevice"}));
}

TEST_F(PcscTest, AReaderWithASerialNumberInItsNameKeepsItsName) {
    makeTestDatabase(kLargestSize);
    switchLogOn();
    expectLoaded(chargerWithReader({"--reader", "Terminal VT-0001"}));
    EXPECT_TRUE(searchLines().contains("VEXALD found reader : Terminal VT-0001 00 00"));
}

TEST_F(PcscTest, AReaderWithoutASerialNumberIsFound) {
    makeTestDatabase(kLargestSize);
    switchLogOn();
    expectLoaded(chargerWithReader({"--serial", ""}));
    EXPECT_TRUE(searchLines().contains("VEXALD found reader : Halvorin Terminal 00 00"));
}

TEST_F(PcscTest, ALongSerialNumberIsCut) {
    makeTestDatabase(kLargestSize);
    switchLogOn();
    expectLoaded(chargerWithReader({"--serial", QString(256, 'S')}));
    EXPECT_TRUE(searchLines().contains("VEXALD found reader : Halvorin Terminal 00 00 (" +
                                       QString(255, 'S') + ")"));
}

TEST_F(PcscTest, TheVendorIsComparedWholeAndIgnoringCase) {
    makeTestDatabase(kLargestSize);
    switchLogOn();
    expectLoaded(chargerWithReader({"--reader", "A", "--vendor", "Halvorin Ltd", "--reader", "B",
                                    "--vendor", "", "--reader", "C", "--vendor", "HALVORIN"}),
                 2);
    EXPECT_EQ(searchLines().mid(0, 4),
              QStringList({"VEXALD findAllPCSCDevices : Try reader A 00 00",
                           "VEXALD findAllPCSCDevices : Not an Halvorin reader",
                           "VEXALD findAllPCSCDevices : Try reader B 01 00",
                           "VEXALD findAllPCSCDevices cannot get SCARD_ATTR_VENDOR_NAME Error : "
                           "0x8010001f"}));
}

TEST_F(PcscTest, AReaderThatAnotherProgramHoldsIsLeftOut) {
    makeTestDatabase(kLargestSize);
    switchLogOn();
    expectNotFound(chargerWithReader({"--held", "yes"}));
    EXPECT_TRUE(
        searchLines().contains("VEXALD findAllPCSCDevices SCardConnect failed Error : 0x8010000b"));
    expectLoaded(chargerWithReader({"--held", "yes", "--reader", "Free", "--serial", "B2"}), 1);
}

TEST_F(PcscTest, AReaderNameAtTheLimitIsFound) {
    constexpr int kLongestName = 121; // the daemon appends six characters
    makeTestDatabase(kLargestSize);
    expectLoaded(chargerWithReader({"--reader", QString(kLongestName, 'x')}));
    EXPECT_FALSE(readFile(path("daemon-log")).contains("too long"));
}

TEST_F(PcscTest, ReadersOfMultiByteNamesAreLoadedInAnyLocale) {
    makeTestDatabase(kLargestSize);
    for (const char* locale : {"LC_ALL=C", "LC_ALL=C.UTF-8", "LC_ALL=de_DE.ISO-8859-1"}) {
        m_environment = QStringList(locale);
        (void)QDir(path("store")).removeRecursively();
        // The second is found behind the first, so the first was counted rightly.
        expectLoaded(chargerWithReader({"--reader", "Größe 終端", "--vendor", "Other", "--reader",
                                        "Entrepôt €", "--serial", "é"}),
                     1);
    }
}

TEST_F(PcscTest, WithoutAFeatureListTheUsualCodeIsUsed) {
    makeTestDatabase(kLargestSize);
    expectLoaded(chargerWithReader({"--features", "none", "--escape-code", "42000001"}));
    EXPECT_TRUE(exchanges()[0].startsWith("> reader0 42000001 "));
}

TEST_F(PcscTest, OtherFeaturesDoNotMatter) {
    makeTestDatabase(kLargestSize);
    expectLoaded(chargerWithReader(
        {"--features", "060442330006 130443330001 130444330001", "--escape-code", "43000000"}));
    expectLoaded(chargerWithReader({"--features", "060442330006", "--escape-code", "42000001"}));
}

TEST_F(PcscTest, AReaderThatRefusesTheCodeGivesAWrongFirstAnswer) {
    makeTestDatabase(kLargestSize);
    const Outcome outcome = chargerWithReader({"--escape-code", "42330001"});
    EXPECT_EQ(outcome.out, output(kInitFailed, 3));
    EXPECT_EQ(outcome.status, 3);
}

struct Case {
    const char* name;
    QStringList options;
    QByteArray told;
    int code;
    bool stored;
};

void PrintTo(const Case& value, std::ostream* stream) {
    *stream << value.name;
}

class PcscFaultTest : public PcscTest, public testing::WithParamInterface<Case> {};

TEST_P(PcscFaultTest, IsToldAndLeavesNoHalfDatabase) {
    const Case& expected = GetParam();
    makeTestDatabase(kLargestSize);
    const Outcome outcome = chargerWithReader(expected.options);
    EXPECT_EQ(outcome.out, output(expected.told, expected.code));
    EXPECT_EQ(outcome.status, expected.code);
    EXPECT_EQ(storedBehind(0) == readFile(path("test.db")), expected.stored);
    EXPECT_EQ(storedNothingBehindReaders(), !expected.stored);
}

// A failing escape leaves an answer of zeros of the whole length behind.
const QByteArray kZeros = kRefused + "0x00000000000000\n";

const Case kCases[] = {
    {"FailAtInit", {"--escape", "1:fail"}, kInitFailed, 3, false},
    {"FailAtRequest", {"--escape", "2:fail"}, kZeros, 4, false},
    {"FailAtData", {"--escape", "3:fail"}, kDataRefused, 7, false},
    {"FailAtEnd", {"--escape", "4:fail"}, kNoEnd, 0, false},
    {"NoBytesAtInit", {"--escape", "1:bytes="}, kNoAnswer + kInitFailed, 14, false},
    {"NoBytesAtRequest", {"--escape", "2:bytes="}, kRefused + "0x\n", 4, false},
    {"NoBytesAtData", {"--escape", "3:bytes="}, kNoDataAnswer, 14, false},
    {"NoBytesAtEnd", {"--escape", "4:bytes="}, kNoEnd, 0, false},
    {"OneByteAtInit", {"--escape", "1:bytes=91"}, kNoAnswer + kInitFailed, 14, false},
    {"OneByteAtData", {"--escape", "3:bytes=91"}, kNoDataAnswer, 14, false},
    {"TwoBytesAtInit", {"--escape", "1:bytes=9100"}, kNoAnswer + kInitFailed, 14, false},
    {"TwoBytesAtData", {"--escape", "3:bytes=9100"}, kNoDataAnswer, 14, false},
    // Longer than the host takes: the daemon refuses it.
    {"TooLongAtInit", {"--escape", "1:bytes=9100F2E0040078012C45BB00"}, kInitFailed, 3, false},
    {"RemovedAtInit", {"--escape", "1:remove"}, kInitFailed, 3, false},
    {"RemovedAtRequest", {"--escape", "2:remove"}, kZeros, 4, false},
    {"RemovedAtData", {"--escape", "3:remove"}, kDataRefused, 7, false},
    {"RemovedAtEnd", {"--escape", "4:remove"}, kNoEnd, 0, false},
    {"DaemonDiesAtInit", {"--escape", "1:kill-daemon"}, kInitFailed, 3, false},
    {"DaemonDiesAtRequest", {"--escape", "2:kill-daemon"}, kZeros, 4, false},
    {"DaemonDiesAtData", {"--escape", "3:kill-daemon"}, kDataRefused, 7, false},
    {"DaemonDiesAtEnd", {"--escape", "4:kill-daemon"}, kNoEnd, 0, false},
    {"TerminalSilent", {"--fault", "init:silence"}, kNoAnswer + kInitFailed, 14, false},
    {"TerminalWrong", {"--fault", "init:wrong"}, kInitFailed, 3, false},
    {"TerminalLate", {"--fault", "init:late=300"}, kSucceeded, 0, true},
    {"TerminalRefuses", {"--fault", "request:bytes=020A"}, kRefused + "0x020A\n", 4, false},
    {"TerminalNack",
     {"--fault", "data:1:nack=41"},
     kInitSucceeded + "\nA NACK was received : A\n",
     5,
     false},
    {"TerminalIncompleteNack",
     {"--fault", "data:1:incomplete-nack"},
     kInitSucceeded + "\nAn incomplete NACK was received\n",
     6,
     false},
    {"TerminalPulled", {"--fault", "data:1:pull"}, kDataRefused, 7, false},
    {"TerminalEndSilent", {"--fault", "end:silence"}, kNoEnd, 0, true},
};

std::string nameOfCase(const testing::TestParamInfo<Case>& tested) {
    return tested.param.name;
}

INSTANTIATE_TEST_SUITE_P(Reader, PcscFaultTest, testing::ValuesIn(kCases), nameOfCase);

} // namespace

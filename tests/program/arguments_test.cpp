// What the command line makes of its arguments.

#include "tests/program/program_test.h"

namespace {

class ArgumentsTest : public ProgramTest {};

TEST_F(ArgumentsTest, TheHelpIsPrintedWithoutAResultLine) {
    const Outcome outcome = charger({"-?"});
    EXPECT_EQ(outcome.out, QByteArray(kUsage) + "\nReturned value : 11");
    EXPECT_EQ(outcome.status, 11);
}

TEST_F(ArgumentsTest, AnyOtherSingleArgumentIsInvalid) {
    // Some of these are words that the toolkit would take for itself.
    for (const char* argument : {"x", "", "-h", "--help", "-??", "-style", "-platform", "-reverse",
                                 "-qmljsdebugger", "test.db"}) {
        const Outcome outcome = charger({argument});
        EXPECT_EQ(outcome.out, "\nInvalid arguments\nResult code : 11" + QByteArray(kUsage) +
                                   "\nReturned value : 11")
            << argument;
        EXPECT_EQ(outcome.status, 11) << argument;
    }
}

TEST_F(ArgumentsTest, FourOrMoreArgumentsAreTooMany) {
    for (const QStringList& arguments :
         {QStringList({"test.db", "/dev/ttyACM0", "2", "3"}),
          QStringList({"-?", "b", "c", "d", "e", "f"}),
          QStringList({"test.db", "/dev/ttyACM0", "-style", "fusion"})}) {
        const Outcome outcome = charger(arguments);
        EXPECT_EQ(outcome.out,
                  "\nInvalid number of arguments\n" + QByteArray(kUsage) + resultLines(11));
        EXPECT_EQ(outcome.status, 11);
    }
}

TEST_F(ArgumentsTest, AMissingDatabaseIsNoticedBeforeAWrongPad) {
    for (const QStringList& arguments :
         {QStringList({"missing.db", "/dev/ttyACM0"}),
          QStringList({"missing.db", "/dev/ttyACM0", "2"}),
          QStringList({"missing.db", "/dev/ttyACM0", "99"}), QStringList({"", "PCSC"}),
          QStringList({"no/such/folder/test.db", "PCSC"})}) {
        const Outcome outcome = charger(arguments);
        EXPECT_EQ(outcome.out,
                  "\nDatabase file does not exist\n" + QByteArray(kUsage) + resultLines(2));
        EXPECT_EQ(outcome.status, 2);
    }
}

TEST_F(ArgumentsTest, AnUnreadableDatabaseCountsAsMissing) {
    makeTestDatabase(4096);
    ASSERT_TRUE(QFile::setPermissions(path("test.db"), QFile::Permissions()));
    const Outcome outcome = run(asOrdinaryUser({executable(), "test.db", "/dev/ttyACM0"}));
    EXPECT_EQ(outcome.out,
              "\nDatabase file does not exist\n" + QByteArray(kUsage) + resultLines(2));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ArgumentsTest, PadsOutside1To14AreRefused) {
    makeTestDatabase(4096);
    for (const char* pad : {"0", "15", "-1", "abc", "", " ", "x3", "0x2", "+", "99999999999",
                            "4294967298", "-4294967294", "100000000000000000000000000000"}) {
        const Outcome outcome = charger({"test.db", "/dev/ttyACM0", pad});
        EXPECT_EQ(outcome.out, "\nInvalid PAD number, it must be between 1 and 14\n" +
                                   QByteArray(kUsage) + resultLines(12))
            << pad;
        EXPECT_EQ(outcome.status, 12) << pad;
    }
}

TEST_F(ArgumentsTest, PadsFrom1To14AreAcceptedAndShownAsTyped) {
    makeTestDatabase(4096);
    for (const char* pad : {"1", "14", "3x", " 7", "+5", "007", "2.9"}) {
        const Outcome outcome = charger({"test.db", "/dev/nowhere", pad});
        EXPECT_EQ(outcome.out, loadHead("test.db", "/dev/nowhere", pad) +
                                   "\nDevice not found on the defined port\n" + resultLines(13))
            << pad;
        EXPECT_EQ(outcome.status, 13) << pad;
    }
}

TEST_F(ArgumentsTest, WithoutAThirdArgumentThePadIs2) {
    makeTestDatabase(4096);
    const Outcome outcome = charger({"test.db", "/dev/nowhere"});
    EXPECT_EQ(outcome.out, loadHead("test.db", "/dev/nowhere", "2") +
                               "\nDevice not found on the defined port\n" + resultLines(13));
}

TEST_F(ArgumentsTest, ArgumentsOfAnySizeAndContentAreSurvived) {
    makeTestDatabase(4096);
    const QByteArray wild = "%s%n%d\t\xC3\xA9" + QByteArray(5000, 'x');
    const Outcome outcome = charger({"test.db", QString::fromUtf8(wild)});
    EXPECT_EQ(outcome.out, loadHead("test.db", wild) + "\nDevice not found on the defined port\n" +
                               resultLines(13));
}

TEST_F(ArgumentsTest, WithoutATerminalNoPortIsFound) {
    makeTestDatabase(4096);
    for (const char* port : {"/dev/ttyACM0", "PCSC", "COM6", "", "/dev/null"}) {
        const Outcome outcome = chargerWithTerminal({"test.db", port}, {"--devices", "0"});
        EXPECT_EQ(outcome.out, loadHead("test.db", port) +
                                   "\nDevice not found on the defined port\n" + resultLines(13))
            << port;
        EXPECT_EQ(outcome.status, 13);
    }
}

TEST_F(ArgumentsTest, APortNameMustMatchExactly) {
    makeTestDatabase(4096);
    for (const char* port : {"/dev/TTYACM0", "/dev/ttyacm0", "ttyACM0", "/dev/ttyACM",
                             "/dev/ttyACM00", "/dev//ttyACM0", " /dev/ttyACM0", "/dev/ttyACM1"}) {
        const Outcome outcome = chargerWithTerminal({"test.db", port});
        EXPECT_EQ(outcome.out, loadHead("test.db", port) +
                                   "\nDevice not found on the defined port\n" + resultLines(13))
            << port;
        EXPECT_EQ(outcome.status, 13);
    }
    EXPECT_TRUE(frames().isEmpty());
}

TEST_F(ArgumentsTest, ATerminalWithOtherIdentifiersIsNotFound) {
    makeTestDatabase(4096);
    for (const QStringList& options :
         {QStringList({"--vendor-id", "f056"}), QStringList({"--product-id", "0013"}),
          QStringList({"--product", ""}), QStringList({"--vendor-id", ""})}) {
        const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0"}, options);
        EXPECT_EQ(outcome.status, 13) << options.join(' ').toStdString();
    }
}

} // namespace

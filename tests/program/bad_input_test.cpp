// Databases and ports that are not what they should be.

#include "tests/program/program_test.h"

#include <QDir>

#include <sys/stat.h>
#include <unistd.h>

namespace {

class BadInputTest : public ProgramTest {
protected:
    static QByteArray notCoherent(const QByteArray& database) {
        return loadHead(database) + kStarted +
               "\nThe database is not coherent"
               "\nCommunication initialization process failed\n" +
               resultLines(1);
    }

    static QByteArray noResponse(const QByteArray& port) {
        return loadHead("test.db", port) + kStarted +
               "\nNo response from the terminal"
               "\nCommunication initialization process failed\n" +
               resultLines(14);
    }

    /// The request frame that rows of R_DBINFO lead to, from its block length on.
    QByteArray requestFor(const QStringList& statements) {
        (void)QFile::remove(path("test.db"));
        EXPECT_TRUE(makeDatabase(path("test.db"), statements, kSampleSize));
        EXPECT_EQ(chargerWithTerminal({"test.db", "/dev/ttyACM0"}).status, 0);
        EXPECT_EQ(stored() == readFile(path("test.db")), true);
        const QByteArray request = readFile(path("frames")).split('\n')[2];
        return request.mid(2 + 7 * 3, request.size() - 2 - 7 * 3 - 6); // without the CRC
    }
};

TEST_F(BadInputTest, APipeOrADeviceIsNoDatabaseFile) {
    ASSERT_EQ(mkfifo(path("pipe.db").toUtf8().constData(), 0666), 0);
    for (const char* name : {"pipe.db", "/dev/null", "/dev/zero", "/dev/tty"}) {
        const Outcome outcome = chargerWithTerminal({name, "/dev/ttyACM0"});
        EXPECT_EQ(outcome.out,
                  "\nDatabase file does not exist\n" + QByteArray(kUsage) + resultLines(2))
            << name;
        EXPECT_EQ(outcome.status, 2) << name;
    }
    EXPECT_TRUE(frames().isEmpty());
}

TEST_F(BadInputTest, ANameThatIsNotUtf8IsRefusedBeforeAnotherFileIsTaken) {
    makeTestDatabase(kSampleSize);
    const Outcome outcome =
        run(shellWithTerminal("name=$(printf 'base\\351.db'); cp test.db \"$name\"; exec " +
                              executable() + " \"$name\" /dev/ttyACM0"));
    EXPECT_EQ(outcome.out,
              "\nDatabase file does not exist\n" + QByteArray(kUsage) + resultLines(2));
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(BadInputTest, NamesThatMeanSomethingElseToSqliteAreFiles) {
    makeTestDatabase(kSampleSize);
    for (const char* name : {":memory:", "file:test.db?mode=memory", ":a.db"}) {
        ASSERT_TRUE(QFile::copy(path("test.db"), path(name)));
        EXPECT_EQ(chargerWithTerminal({name, "/dev/ttyACM0"}).status, 0) << name;
        EXPECT_EQ(stored() == readFile(path("test.db")), true) << name;
        ASSERT_TRUE(QFile::remove(path("store/ttyACM0/pad-02.db")));
    }
}

TEST_F(BadInputTest, AValueLargerThanARequestEndsTheConcepts) {
    EXPECT_EQ(requestFor({"CREATE TABLE R_DBINFO (NUM_CONCEPT, VALUE)",
                          "INSERT INTO R_DBINFO VALUES (1, 'a'), (2, replace(hex(zeroblob(50000)), "
                          "'0', 'x')), (3, 'c')"}),
              "03 80 03 03 C0 00 81 01 61");
}

TEST_F(BadInputTest, AGeneratedColumnIsAColumn) {
    EXPECT_EQ(requestFor({"CREATE TABLE R_DBINFO (NUM_CONCEPT INTEGER, VALUE TEXT AS ('v' || "
                          "NUM_CONCEPT))",
                          "INSERT INTO R_DBINFO (NUM_CONCEPT) VALUES (1), (2)"}),
              "08 80 03 03 C0 00 81 02 76 31 82 02 76 32");
}

TEST_F(BadInputTest, ATextOfOneByteIsADatabaseToSqlite) {
    // Its integrity check says so; the terminal then gets that byte.
    ASSERT_TRUE(writeFile(path("test.db"), "t"));
    m_environment << "LD_PRELOAD=" VEXA_PATIENT_SELECT;
    EXPECT_EQ(chargerWithTerminal({"test.db", "/dev/ttyACM0"}).status, 0);
    EXPECT_EQ(stored(), "t");
}

TEST_F(BadInputTest, ADatabaseThatACrashHasInterruptedIsCompleted) {
    makeTestDatabase(kSampleSize);
    // As a crash leaves it: the journal of a transaction, and pages that are already written.
    const Outcome crash = run(
        {"sh", "-c",
         "sqlite3 crash.db 'PRAGMA page_size=512; CREATE TABLE R_DBINFO (a, b); CREATE TABLE f "
         "(x); "
         "INSERT INTO f VALUES (zeroblob(250000));' && "
         "(printf 'PRAGMA cache_size=5; BEGIN; UPDATE f SET x = randomblob(250000); INSERT INTO f "
         "VALUES (randomblob(90000));\\n.shell cp crash.db hot.db; cp crash.db-journal "
         "hot.db-journal\\n' | sqlite3 crash.db)"});
    ASSERT_EQ(crash.status, 0);
    ASSERT_TRUE(QFile::exists(path("hot.db-journal")));
    EXPECT_EQ(chargerWithTerminal({"hot.db", "/dev/ttyACM0"}).status, 0);
    EXPECT_EQ(stored() == readFile(path("crash.db")), true) << "as before the transaction";
    EXPECT_FALSE(QFile::exists(path("hot.db-journal")));
}

TEST_F(BadInputTest, AFolderIsNoDatabase) {
    ASSERT_TRUE(QDir().mkdir(path("folder.db")));
    const Outcome outcome = chargerWithTerminal({"folder.db", "/dev/ttyACM0"});
    EXPECT_EQ(outcome.out, notCoherent("folder.db"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(frames().isEmpty());
}

TEST_F(BadInputTest, ATextIsNoDatabase) {
    ASSERT_TRUE(writeFile(path("text.db"), QByteArray("no database\n").repeated(1000)));
    const Outcome outcome = chargerWithTerminal({"text.db", "/dev/ttyACM0"});
    EXPECT_EQ(outcome.out, notCoherent("text.db"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(frames().isEmpty());
}

TEST_F(BadInputTest, ATruncatedDatabaseIsNotSent) {
    QStringList statements = twoConcepts();
    statements << "CREATE TABLE filling (x)"
               << "INSERT INTO filling VALUES (zeroblob(200000))";
    ASSERT_TRUE(makeDatabase(path("cut.db"), statements));
    ASSERT_TRUE(QFile::resize(path("cut.db"), 100000));
    const Outcome outcome = chargerWithTerminal({"cut.db", "/dev/ttyACM0"});
    EXPECT_EQ(outcome.out, notCoherent("cut.db"));
    EXPECT_TRUE(frames().isEmpty());
}

TEST_F(BadInputTest, ADamagedDatabaseIsNotSent) {
    ASSERT_TRUE(makeDatabase(path("bad.db"), twoConcepts() + QStringList({"CREATE TABLE t (x)"})));
    QByteArray content = readFile(path("bad.db"));
    content.replace(4096, 100, QByteArray(100, '\xFF'));
    ASSERT_TRUE(writeFile(path("bad.db"), content));
    EXPECT_EQ(chargerWithTerminal({"bad.db", "/dev/ttyACM0"}).out, notCoherent("bad.db"));
}

TEST_F(BadInputTest, ADatabaseWithoutConceptsIsSent) {
    EXPECT_EQ(requestFor({"CREATE TABLE other (x)"}), "00 80 03 03 C0 00");
}

TEST_F(BadInputTest, RowsOfEveryKindAreSentOrSkipped) {
    EXPECT_EQ(
        requestFor({"CREATE TABLE R_DBINFO (NUM_CONCEPT, VALUE)",
                    "INSERT INTO R_DBINFO VALUES (1, NULL), (2, x'4142'), (3, 2.5), (NULL, 'n'), "
                    "(x'00', 'b'), (4.0, 'r'), ('word', 'w'), (99, 'o')"}),
        "0E 80 03 03 C0 00 81 00 82 02 41 42 83 03 32 2E 35 84 01 72");
}

TEST_F(BadInputTest, ATooLongValueEndsTheConcepts) {
    EXPECT_EQ(requestFor({"CREATE TABLE R_DBINFO (NUM_CONCEPT, VALUE)",
                          "INSERT INTO R_DBINFO VALUES (1, 'a'), "
                          "(2, hex(zeroblob(100000))), (3, 'c')"}),
              "03 80 03 03 C0 00 81 01 61");
}

TEST_F(BadInputTest, ATableOfOneColumnGivesNoConcepts) {
    EXPECT_EQ(
        requestFor({"CREATE TABLE R_DBINFO (NUM_CONCEPT)", "INSERT INTO R_DBINFO VALUES (1), (2)"}),
        "00 80 03 03 C0 00");
}

TEST_F(BadInputTest, APortThatIsNoTerminalDoesNotAnswer) {
    makeTestDatabase(kSampleSize);
    // A USB serial device in sysfs whose node is a plain file.
    ASSERT_TRUE(writeFile(
        path("further"),
        "P: /devices/usb9/9-1\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: idVendor=" VEXA_VENDOR_ID
        "\\n\n"
        "A: idProduct=0012\\n\nA: product=File - x\\n\n\n"
        "P: /devices/usb9/9-1/9-1:1.0/tty/ttyACM7\nN: ttyACM7=00\nE: SUBSYSTEM=tty\n"
        "E: DEVNAME=/dev/ttyACM7\n\n"));
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM7"},
                                                {"--devices", "0", "--further", path("further")});
    EXPECT_EQ(outcome.out, noResponse("/dev/ttyACM7"));
    EXPECT_EQ(outcome.status, 14);
}

TEST_F(BadInputTest, APortThatMayNotBeOpenedDoesNotAnswer) {
    makeTestDatabase(kSampleSize);
    switchLogOn();
    const Outcome outcome = run(asOrdinaryUser(shellWithTerminal(
        "chmod 000 $UMOCKDEV_DIR/dev/ttyACM0; exec " + executable() + " test.db /dev/ttyACM0")));
    EXPECT_EQ(outcome.out, noResponse("/dev/ttyACM0"));
    EXPECT_EQ(outcome.status, 14);
    EXPECT_TRUE(logLines(path("log/logVEXA.txt")).contains("VEXALD Handler : -1"));
}

TEST_F(BadInputTest, APortThatIsGoneWhenTheLoadBeginsDoesNotAnswer) {
    makeTestDatabase(kSampleSize);
    const Outcome outcome = run(shellWithTerminal("rm $UMOCKDEV_DIR/dev/ttyACM0; exec " +
                                                  executable() + " test.db /dev/ttyACM0"));
    EXPECT_EQ(outcome.out, noResponse("/dev/ttyACM0"));
    EXPECT_EQ(outcome.status, 14);
}

TEST_F(BadInputTest, ADatabaseThatShrinksDuringTheLoadIsNotCalledLoaded) {
    makeTestDatabase(kSampleSize);
    // The terminal is held up at block 3 until the file is cut behind the program's back.
    const Outcome outcome =
        run(shellWithTerminal(executable() + " test.db /dev/ttyACM0 & " + waitForTrace("block 3") +
                                  "truncate -s 100000 test.db; wait $!",
                              {"--fault", "data:3:late=2500"}));
    EXPECT_TRUE(outcome.out.contains("\nNo response for the ending frame"));
    EXPECT_FALSE(outcome.out.contains("Loading succeeded"));
    EXPECT_TRUE(storedNothing());
}

} // namespace

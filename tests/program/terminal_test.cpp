// The simulated terminal's own program: its command line, its ends, and hosts that misbehave.

#include "tests/program/program_test.h"

namespace {

class TerminalProgramTest : public ProgramTest {
protected:
    Outcome terminal(const QStringList& arguments) {
        return run(QStringList({VEXA_TERMINAL, "--store", path("store")}) + arguments);
    }

    /// The status of a command line that is refused with a reason on standard error.
    int statusOf(const QStringList& arguments, const QByteArray& reason) {
        const Outcome outcome = runAndComplain(QStringList(VEXA_TERMINAL) + arguments);
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(outcome.err.startsWith("vexa-terminal: " + reason)) << outcome.err.constData();
        return outcome.status;
    }
};

TEST_F(TerminalProgramTest, ItExplainsItself) {
    const Outcome outcome = run({VEXA_TERMINAL, "--help"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.out.startsWith("Usage: vexa-terminal [OPTION]... -- COMMAND"));
}

TEST_F(TerminalProgramTest, AWrongCommandLineIsRefusedWithAReason) {
    EXPECT_EQ(statusOf({}, ""), 64);
    EXPECT_EQ(statusOf({"--"}, ""), 64);
    EXPECT_EQ(statusOf({"--nonsense", "--", "true"}, ""), 64);
    EXPECT_EQ(statusOf({"--devices", "101", "--", "true"}, ""), 64);
    EXPECT_EQ(statusOf({"--devices", "-1", "--", "true"}, ""), 64);
    EXPECT_EQ(statusOf({"--rate", "fast", "--", "true"}, ""), 64);
    EXPECT_EQ(statusOf({"--fault", "end:nonsense", "--", "true"}, "fault \"end:nonsense\""), 64);
    EXPECT_EQ(statusOf({"--trace"}, ""), 64);
}

TEST_F(TerminalProgramTest, AFileThatCannotBeMadeIsAReasonNotToStart) {
    EXPECT_EQ(statusOf({"--trace", "/no/such/folder/trace", "--", "true"}, ""), 69);
}

TEST_F(TerminalProgramTest, ItEndsAsItsCommandDoes) {
    EXPECT_EQ(terminal({"--", "true"}).status, 0);
    EXPECT_EQ(terminal({"--", "sh", "-c", "exit 42"}).status, 42);
    EXPECT_EQ(terminal({"--", "sh", "-c", "kill -9 $$"}).status, 137);
    EXPECT_EQ(statusOf({"--", "no-such-command"}, "cannot run no-such-command: "), 127);
}

TEST_F(TerminalProgramTest, ACommandThatIsStoppedAndContinuedIsWaitedFor) {
    EXPECT_EQ(terminal({"--", "sh", "-c",
                        "(until grep -q '^State:.T' /proc/$$/status; do sleep 0.01; done; "
                        "kill -CONT $$) & kill -STOP $$; exit 3"})
                  .status,
              3);
}

TEST_F(TerminalProgramTest, EndedItselfItEndsItsCommand) {
    const Outcome outcome =
        terminal({"--", "sh", "-c",
                  "trap 'echo asked; exit 5' TERM; kill $PPID; while :; do sleep 0.01; done"});
    EXPECT_EQ(outcome.out, "asked\n");
    EXPECT_EQ(outcome.status, 5);
}

TEST_F(TerminalProgramTest, ATerminalThatIsHungUpPutsItsThingsAway) {
    makeTestDatabase(kSampleSize);
    const QString terminal =
        quoted(commandWithTerminal({"test.db", "/dev/ttyACM0"}, {"--fault", "data:3:late=60000"}));
    const Outcome outcome =
        run({"sh", "-c",
             "touch trace; (exec " + terminal + " >out) & " + waitForTrace("block 3") +
                 "kill -HUP $!; wait $!; find store -type f; find . -name 'umockdev.*'"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "");
}

TEST_F(TerminalProgramTest, ItsCommandHearsOfAReaderThatGoesAway) {
    EXPECT_EQ(terminal({"--", "sh", "-c", "yes | head -n 1"}).out, "y\n");
}

TEST_F(TerminalProgramTest, AnAnswerOfAMebibyteIsNoDeadEnd) {
    makeTestDatabase(kSampleSize);
    const Outcome outcome =
        chargerWithTerminal({"test.db", "/dev/ttyACM0"}, {"--fault", "data:2:long=1048576"});
    EXPECT_EQ(outcome.status, 7);
    EXPECT_FALSE(outcome.out.contains("Loading succeeded"));
    EXPECT_TRUE(storedNothing());
}

TEST_F(TerminalProgramTest, AHostThatDiesInAFrameLeavesNothingBehind) {
    makeTestDatabase(kSampleSize);
    const Outcome outcome = run(shellWithTerminal("printf '\\057\\300\\004' >/dev/ttyACM0; " +
                                                  waitForTrace("line went down") + "exec " +
                                                  executable() + " test.db /dev/ttyACM0"));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(trace().first(), "ttyACM0 discarded 3 bytes that begin with 2F C0 04: the line went "
                               "down in the middle of a frame");
    EXPECT_EQ(stored() == readFile(path("test.db")), true);
}

TEST_F(TerminalProgramTest, AHostThatDiesInALoadLeavesNothingBehind) {
    makeTestDatabase(kSampleSize);
    const Outcome outcome = run(shellWithTerminal(executable() + " test.db /dev/ttyACM0 >out & " +
                                                      waitForTrace("block 3") + "kill -9 $!; " +
                                                      waitForTrace("line went down"),
                                                  {"--fault", "data:3:late=2500"}));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(storedNothing());
    EXPECT_FALSE(readFile(path("out")).contains("Loading succeeded"));
}

TEST_F(TerminalProgramTest, ALinkRateIsKept) {
    makeTestDatabase(kSampleSize);
    const Outcome outcome = chargerWithTerminal({"test.db", "/dev/ttyACM0"},
                                                {"--rate", "1.2M", "--times", path("times")});
    EXPECT_EQ(outcome.status, 0);
    // "8 blocks 245760 bytes T seconds": at 1200000 bytes a second about 0.2, less what the line
    // buffers.
    const QList<QByteArray> words = readFile(path("times")).simplified().split(' ');
    ASSERT_GE(words.size(), 6);
    EXPECT_GE(words[words.size() - 2].toDouble(), 0.15) << words.join(' ').constData();
}

} // namespace

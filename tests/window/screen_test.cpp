// The unchanged program with its window.

#include "tests/window/screen_fixture.h"

#include <QElapsedTimer>

namespace {

TEST_F(ScreenTest, TheWindowOpensAndClosesWithStatus0) {
    auto program = start();
    waitForWindow("VEXA Chargeur");
    clickClose();
    EXPECT_EQ(endOf(*program), 0);
    EXPECT_EQ(program->readAllStandardOutput(), "");
    EXPECT_EQ(program->readAllStandardError(), "");
    EXPECT_EQ(readFile(configFile()), defaultConfig());
}

TEST_F(ScreenTest, ALoadStoresTheDatabaseInTheConfiguredPad) {
    prepare(kSampleSize);
    auto program = start();
    waitForWindow("VEXA Chargeur");
    for (int i = 0; i < 2; ++i) { // one load right after another
        clickLoad();
        confirm("VEXA message");
    }
    clickClose();
    EXPECT_EQ(endOf(*program), 0);
    EXPECT_EQ(stored(3), readFile(path("test.db")));
}

TEST_F(ScreenTest, ClosedWhileTheTerminalIsSilentTheProgramEndsWithoutWaiting) {
    prepare(kSampleSize);
    auto program = start({"--fault", "data:2:silence"});
    waitForWindow("VEXA Chargeur");
    clickLoad();
    ASSERT_TRUE(waitForTrace(*program, "block 2"));
    QElapsedTimer timer;
    timer.start();
    clickClose();
    EXPECT_EQ(endOf(*program), 0);
    EXPECT_LT(timer.elapsed(), 2500) << "The worker waits for 3 seconds.";
    EXPECT_TRUE(storedNothing());
}

TEST_F(ScreenTest, ClosedInTheMiddleOfALoadTheProgramEnds) {
    prepare(4000000);
    auto program = start({"--rate", "500k"});
    waitForWindow("VEXA Chargeur");
    clickLoad();
    ASSERT_TRUE(waitForTrace(*program, "block 5"));
    clickClose();
    EXPECT_EQ(endOf(*program), 0);
    EXPECT_TRUE(storedNothing());
}

TEST_F(ScreenTest, AnUnpluggedTerminalEndsTheLoadAndNotTheProgram) {
    prepare(kSampleSize);
    auto program = start({"--fault", "data:2:pull"});
    waitForWindow("VEXA Chargeur");
    clickLoad();
    confirm("VEXA message");
    clickLoad(); // It is still listed.
    confirm("VEXA message");
    clickClose();
    EXPECT_EQ(endOf(*program), 0);
}

TEST_F(ScreenTest, AnInvalidConfigurationIsToldAndReplaced) {
    configure("&Cancel=no\n");
    auto program = start();
    waitForWindow("VEXA message");
    EXPECT_EQ(readFile(configFile()), "&Cancel=no\n") << "It is replaced after the message.";
    confirm("VEXA message");
    waitForWindow("VEXA Chargeur");
    EXPECT_EQ(readFile(configFile()), defaultConfig());
    clickClose();
    EXPECT_EQ(endOf(*program), 0);
}

TEST_F(ScreenTest, ASecondWindowOpensAndBothClose) {
    auto first = start();
    waitForWindow("VEXA Chargeur");
    auto second = start();
    waitForWindows("VEXA Chargeur", 2);
    clickClose();
    waitForWindows("VEXA Chargeur", 1);
    clickClose();
    EXPECT_EQ(endOf(*first), 0);
    EXPECT_EQ(endOf(*second), 0);
}

TEST_F(ScreenTest, AnyRegionOfALanguageSpeaksIt) {
    m_environment << "LC_ALL=fr_CA.UTF-8";
    auto program = start();
    waitForWindow("VEXA Chargeur");
    clickLoad(); // without a path
    confirm("Message VEXA");
    clickClose();
    EXPECT_EQ(endOf(*program), 0);
}

TEST_F(ScreenTest, AnOrdinaryUserHasTheSameWindow) {
    auto program = std::make_unique<QProcess>();
    program->setWorkingDirectory(path(""));
    program->setEnvironment(environment());
    const QStringList command = asOrdinaryUser({executable()});
    program->start(command.first(), command.mid(1));
    waitForWindow("VEXA Chargeur");
    clickClose();
    EXPECT_EQ(endOf(*program), 0);
    EXPECT_EQ(program->readAllStandardError(), "");
}

class NoScreenTest : public ProgramTest {
protected:
    void expectAFriendlyEnd() {
        const Outcome outcome = runAndComplain({executable()});
        EXPECT_EQ(outcome.status, 69);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "VEXACharger: there is no display to show the window on.\n"
                               "To load from the command line, type: VEXACharger arg1 arg2 [arg3]\n"
                               "Type: 'VEXACharger -?' for help\n");
    }
};

TEST_F(NoScreenTest, WithoutADisplayTheUserIsToldOfTheCommandLine) {
    expectAFriendlyEnd();
}

TEST_F(NoScreenTest, ADisplayThatCannotBeReachedIsNone) {
    m_environment << "DISPLAY=:4711";
    expectAFriendlyEnd();
}

} // namespace

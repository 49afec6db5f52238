// A load from the window: its states, its progress, its end, and how it is cancelled.

#include "tests/window/scripted_window.h"

#include "ui/load_worker.h"

namespace {

using listed_devices::terminal;

class WindowLoadTest : public ScriptedWindowTest {
protected:
    WindowLoadTest() {
        storeText(g_configParams.PAD_number, "2");
        listed_devices::serial = {terminal("T1", "/dev/ttyACM0"), terminal("T2", "/dev/ttyACM1")};
    }

    /// Opens the window and chooses a database of so many full blocks.
    void prepare(int blocks) {
        openWindow();
        chooseDatabase(blocks * 30720);
    }

    QString lastText() const {
        return m_dialogs.shown().empty() ? "no message" : m_dialogs.shown().back().text;
    }
};

TEST_F(WindowLoadTest, ALoadRunsThroughAllStates) {
    prepare(2);
    acceptLoad();
    answer({"05", "05", "050000"});
    m_dialogs.whileOpen = [this](QDialog& dialog) {
        EXPECT_EQ(bar()->value(), 100);
        EXPECT_EQ(percentage()->text(), "100 %");
        EXPECT_EQ(enabled(), kLoading);
        EXPECT_EQ(dialog.parentWidget(), m_window.get());
    };
    EXPECT_EQ(enabled(), kAtTheStart);
    m_gate.holdAt(4); // the second block
    click("loadButton");
    EXPECT_EQ(enabled(), kLoading);
    ASSERT_TRUE(m_gate.waitForWorker());
    ASSERT_TRUE(QTest::qWaitFor([this] { return bar()->value() == 50; }));
    EXPECT_EQ(percentage()->text(), "50 %");
    EXPECT_EQ(enabled(), kLoading);
    m_gate.open();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(m_dialogs.shown()[0].title, "VEXA message");
    EXPECT_EQ(m_dialogs.shown()[0].text, "Loading succeeded");
    EXPECT_TRUE(m_dialogs.shown()[0].isModal);
    EXPECT_EQ(bar()->value(), 0);
    EXPECT_EQ(percentage()->text(), "0 %");
}

TEST_F(WindowLoadTest, TheSelectedTerminalIsLoaded) {
    prepare(1);
    devices()->setCurrentIndex(1);
    click("loadButton");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(scripted_ports::events[0], "serial /dev/ttyACM1");
}

TEST_F(WindowLoadTest, ThePadIsTheConfiguredNumber) {
    for (const auto& [text, address] : {std::pair<const char*, char>("2", '\x2F'),
                                        {"11 and more", '\xBF'},
                                        {"Numéro de PAD", '\x0F'},
                                        {"", '\x0F'}}) {
        scripted_ports::exchanges.clear();
        storeText(g_configParams.PAD_number, text);
        prepare(1);
        click("loadButton");
        ASSERT_TRUE(QTest::qWaitFor([this] { return enabled() == kIdle; }));
        EXPECT_EQ(scripted_ports::exchanges[0].frame[0], address) << text;
    }
}

TEST_F(WindowLoadTest, ACancelEndsTheLoadAfterTheBlockUnderWay) {
    prepare(3);
    acceptLoad();
    answer({"05", "05", "05", "050000"});
    m_gate.holdAt(3);
    click("loadButton");
    ASSERT_TRUE(m_gate.waitForWorker());
    click("cancelButton");
    EXPECT_EQ(enabled(), kLoading);
    m_gate.open();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(lastText(), "Loading was cancelled");
    EXPECT_EQ(scripted_ports::exchanges.size(), 3U);
    EXPECT_EQ(bar()->value(), 0);
}

TEST_F(WindowLoadTest, ACancelReachesEveryWorkerSoFar) {
    prepare(1);
    for (std::size_t i = 1; i <= 2; ++i) {
        click("loadButton");
        ASSERT_TRUE(waitForEnd(i)); // nothing is answered
    }
    m_gate.holdAt(3);
    click("loadButton");
    ASSERT_TRUE(m_gate.waitForWorker());
    const LogCapture log;
    click("cancelButton");
    EXPECT_EQ(log.count("VEXALD => VEXAThread::loadCancel"), 3U);
    m_gate.open();
    ASSERT_TRUE(waitForEnd(3));
}

TEST_F(WindowLoadTest, EveryEndIsToldInItsWords) {
    struct End {
        std::initializer_list<const char*> answers;
        const char* text;
    };
    const End ends[] = {
        {{}, "No response from the terminal"},
        {{"FF"}, "Initialisation protocol failed"},
        {{"F2E0040078012C45BB", "F2400200010A1B"},
         "Loading request failed - error : 0xF2400200010A1B"},
        {{"F2E0040078012C45BB", "F240020000212A", "060000E9"}, "A NACK was received : é"},
        {{"F2E0040078012C45BB", "F240020000212A", "0600"}, ""},
        {{"F2E0040078012C45BB", "F240020000212A"}, "Timeout when sending data"},
        {{"F2E0040078012C45BB", "F240020000212A", "15", "050000"}, "Loading succeeded"},
        {{"F2E0040078012C45BB", "F240020000212A", "05", "0500"}, "Failed to send ending frame"},
        {{"F2E0040078012C45BB", "F240020000212A", "05", "050000"}, "Loading succeeded"},
    };
    prepare(1);
    std::size_t loads = 0;
    for (const End& end : ends) {
        scripted_ports::exchanges.clear();
        scripted_ports::answers.clear();
        answer(end.answers);
        click("loadButton");
        ASSERT_TRUE(waitForEnd(++loads)) << end.text;
        EXPECT_EQ(lastText(), end.text);
        EXPECT_EQ(m_dialogs.shown().back().title, "VEXA message");
        EXPECT_EQ(m_dialogs.shown().back().parent, m_window.get());
        EXPECT_EQ(bar()->value(), 0);
        EXPECT_EQ(percentage()->text(), "0 %");
    }
}

TEST_F(WindowLoadTest, TheEndOfALoadThatFailsAtOnceIsNeverMissed) {
    openWindow();
    ASSERT_TRUE(writeFile(path("text.db"), "no database"));
    databaseField()->setText(path("text.db"));
    for (std::size_t i = 1; i <= 50; ++i) {
        click("loadButton");
        ASSERT_TRUE(waitForEnd(i));
        EXPECT_EQ(lastText(), "The database is not coherent");
    }
}

TEST_F(WindowLoadTest, WithoutATerminalLoadOnlyWritesToTheLog) {
    listed_devices::serial.clear();
    prepare(1);
    const LogCapture log;
    click("loadButton");
    EXPECT_EQ(log.lines(), std::vector<std::string>({"VEXALD => VEXAInterface::slot_load",
                                                     "VEXALD => VEXADeviceManager::getDeviceList",
                                                     "VEXALD <= VEXADeviceManager::getDeviceList",
                                                     "VEXALD List of devices has been obtained",
                                                     "VEXALD    No device selected",
                                                     "VEXALD <= VEXAInterface::slot_load"}));
    EXPECT_TRUE(m_dialogs.shown().empty());
    EXPECT_EQ(enabled(), kAtTheStart);
}

TEST_F(WindowLoadTest, ADatabaseThatCannotBeOpenedIsToldAndChangesNothing) {
    openWindow();
    for (const QString& file : {QString(), QString("/no/such.db"), QString("/dev/null")}) {
        databaseField()->setText(file);
        click("loadButton");
        EXPECT_EQ(m_dialogs.shown().back().title, "VEXA Message");
        EXPECT_EQ(m_dialogs.shown().back().text, "Database file does not exist");
        EXPECT_TRUE(m_dialogs.shown().back().isModal);
        EXPECT_EQ(m_dialogs.shown().back().parent, nullptr);
        EXPECT_EQ(enabled(), kAtTheStart);
    }
    EXPECT_EQ(m_dialogs.shown().size(), 3U);
    EXPECT_TRUE(scripted_ports::events.empty());
}

TEST_F(WindowLoadTest, ADatabaseBeyondTheSizeFieldIsToldAsNotOpened) {
    openWindow();
    chooseDatabase(4096);
    ASSERT_TRUE(QFile::resize(path("test.db"), 2147483648));
    click("loadButton");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(m_dialogs.shown().back().text, "The database could not be opened");
}

TEST_F(WindowLoadTest, AFolderIsNoCoherentDatabase) {
    openWindow();
    databaseField()->setText(path(""));
    click("loadButton");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(lastText(), "The database is not coherent");
}

TEST_F(WindowLoadTest, TheStepsOfALoadAreLogged) {
    prepare(1);
    const LogCapture log;
    click("loadButton");
    ASSERT_TRUE(waitForEnd());
    for (const char* line :
         {"VEXALD List of devices has been obtained",
          "VEXALD Currently selected device has been obtained",
          "VEXALD Database manager has been created", "VEXALD Communicator has been created",
          "VEXALD Loading thread has been started", "VEXALD <= VEXAInterface::slot_load",
          "VEXALD => VEXAInterface::slot_showMessage",
          "VEXALD <= VEXAInterface::slot_showMessage"}) {
        EXPECT_EQ(log.count(line), 1U) << line;
    }
}

TEST_F(WindowLoadTest, AWindowThatGoesInTheMiddleOfALoadLeavesTheWorkerAlone) {
    prepare(3);
    acceptLoad();
    answer({"05", "05", "05", "050000"});
    m_gate.holdAt(3);
    click("loadButton");
    ASSERT_TRUE(m_gate.waitForWorker());
    m_window.reset();
    EXPECT_FALSE(cancelAllLoads()) << "The worker waits for its terminal.";
    m_gate.open();
    while (!cancelAllLoads()) {
    }
    EXPECT_EQ(scripted_ports::exchanges.size(), 3U) << "Its load was cancelled.";
    QCoreApplication::processEvents();
    EXPECT_TRUE(m_dialogs.shown().empty());
}

TEST_F(WindowLoadTest, CloseClosesTheLogAndTheWindowAlsoInTheMiddleOfALoad) {
    prepare(1);
    m_gate.holdAt(1);
    click("loadButton");
    ASSERT_TRUE(m_gate.waitForWorker());
    const QString file = path("log");
    g_logfileStream = std::fopen(file.toUtf8().constData(), "w");
    click("closeButton");
    EXPECT_FALSE(m_window->isVisible());
    EXPECT_EQ(g_logfileStream, nullptr);
    EXPECT_EQ(logLines(file), QStringList("VEXALD => VEXAInterface::slot_close"));
}

} // namespace

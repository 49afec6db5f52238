// The slots that tell how a load goes, called as a worker calls them.

#include "tests/window/scripted_window.h"

#include <QMessageBox>

namespace {

class MessagesTest : public ScriptedWindowTest {
protected:
    MessagesTest() { openWindow(); }
};

TEST_F(MessagesTest, EachCodeHasItsTextAndOthersHaveNone) {
    const std::pair<int, const char*> texts[] = {
        {0, "Loading succeeded"},
        {1, "The database is not coherent"},
        {2, "The database could not be opened"},
        {3, "Initialisation protocol failed"},
        {4, ""},
        {5, ""},
        {6, ""},
        {7, "A data block was refused"},
        {8, "Failed to send ending frame"},
        {9, ""},
        {10, "Loading was cancelled"},
        {11, ""},
        {12, ""},
        {13, ""},
        {14, "No response from the terminal"},
        {15, ""},
        {-1, ""},
    };
    for (const auto& [code, text] : texts) {
        m_window->slot_showProgress(40);
        int shownAt = -1;
        m_dialogs.whileOpen = [&](QDialog&) { shownAt = bar()->value(); };
        m_window->slot_showMessage(code);
        EXPECT_EQ(m_dialogs.shown().back().title, "VEXA message") << code;
        EXPECT_EQ(m_dialogs.shown().back().text, text) << code;
        EXPECT_TRUE(m_dialogs.shown().back().isModal) << code;
        EXPECT_EQ(m_dialogs.shown().back().parent, m_window.get()) << code;
        EXPECT_EQ(shownAt, code == 0 ? 100 : 40) << code;
        EXPECT_EQ(bar()->value(), 0) << code;
        EXPECT_EQ(percentage()->text(), "0 %") << code;
        EXPECT_EQ(enabled(), kIdle) << code;
    }
    EXPECT_EQ(m_dialogs.shown().size(), std::size(texts));
}

TEST_F(MessagesTest, ARefusalIsShownAsItStands) {
    m_window->slot_showProgress(40);
    m_window->slot_showNACK("Ünd so weiter: 42");
    EXPECT_EQ(m_dialogs.shown().back().title, "VEXA message");
    EXPECT_EQ(m_dialogs.shown().back().text, "Ünd so weiter: 42");
    EXPECT_EQ(m_dialogs.shown().back().parent, m_window.get());
    EXPECT_EQ(bar()->value(), 0);
    EXPECT_EQ(percentage()->text(), "0 %");
    EXPECT_EQ(enabled(), kIdle);
}

TEST_F(MessagesTest, TheBarStopsShortOfTheEndAndTheLabelDoesNot) {
    const struct {
        int progress;
        int value;
        const char* label;
    } steps[] = {{0, 0, "0 %"},      {1, 1, "1 %"},      {99, 99, "99 %"},
                 {100, 99, "100 %"}, {150, 99, "150 %"}, {-3, 99, "-3 %"}};
    for (const auto& step : steps) {
        m_window->slot_showProgress(step.progress);
        EXPECT_EQ(bar()->value(), step.value) << step.progress;
        EXPECT_EQ(percentage()->text(), step.label);
    }
}

TEST_F(MessagesTest, ProgressIsStillShownBehindAnOpenMessage) {
    m_dialogs.whileOpen = [this](QDialog&) {
        (void)QMetaObject::invokeMethod(m_window.get(), "slot_showProgress", Qt::QueuedConnection,
                                        Q_ARG(int, 70));
        QCoreApplication::processEvents();
        EXPECT_EQ(bar()->value(), 70);
    };
    m_window->slot_showMessage(8);
    EXPECT_EQ(bar()->value(), 0);
}

TEST_F(MessagesTest, AMessageThatIsClosedByEscapeEndsTheLoadToo) {
    m_dialogs.accepts = false;
    m_dialogs.whileOpen = [](QDialog& box) { QTest::keyClick(&box, Qt::Key_Escape); };
    m_window->slot_showProgress(40);
    m_window->slot_showMessage(14);
    EXPECT_EQ(bar()->value(), 0);
    EXPECT_EQ(percentage()->text(), "0 %");
    EXPECT_EQ(enabled(), kIdle);
}

TEST_F(MessagesTest, TheSlotsOfAWorkerAreTraced) {
    const LogCapture log;
    m_window->slot_showNACK("x");
    m_window->slot_showProgress(1);
    for (const char* line :
         {"VEXALD => VEXAInterface::slot_showNACK", "VEXALD <= VEXAInterface::slot_showNACK",
          "VEXALD => VEXAInterface::slot_showProgress",
          "VEXALD <= VEXAInterface::slot_showProgress"}) {
        EXPECT_EQ(log.count(line), 1U) << line;
    }
}

class KeyboardTest : public ScriptedWindowTest {
protected:
    KeyboardTest() {
        storeText(g_configParams.PAD_number, "2");
        listed_devices::serial = {listed_devices::terminal("T1", "/dev/ttyACM0")};
        openWindow();
        m_window->activateWindow();
    }

    void press(Qt::Key key) const { QTest::keyClick(m_window->focusWidget(), key); }

    QString focused() const { return m_window->focusWidget()->objectName(); }
};

TEST_F(KeyboardTest, TheTabKeyFollowsTheWayOfALoad) {
    databaseField()->setFocus();
    QStringList way = {focused()};
    for (int i = 0; i < 7; ++i) {
        press(Qt::Key_Tab);
        way << focused();
    }
    EXPECT_EQ(way, QStringList({"dbPathEdit", "browseButton", "deviceCombo", "refreshButton",
                                "loadButton", "cancelButton", "closeButton", "dbPathEdit"}));
}

TEST_F(KeyboardTest, ALoadIsStartedAndCancelledWithoutAMouse) {
    chooseDatabase(3 * 30720);
    acceptLoad();
    answer({"05", "05", "05", "050000"});
    m_gate.holdAt(3);
    button("loadButton")->setFocus();
    press(Qt::Key_Space);
    EXPECT_EQ(focused(), "cancelButton");
    ASSERT_TRUE(m_gate.waitForWorker());
    press(Qt::Key_Space);
    m_gate.open();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(m_dialogs.shown()[0].text, "Loading was cancelled");
    EXPECT_EQ(focused(), "loadButton");
}

TEST_F(KeyboardTest, ScreenReadersAreToldThePaintedCaptions) {
    EXPECT_EQ(databaseField()->accessibleName(), "Database file");
    EXPECT_EQ(devices()->accessibleName(), "Device list");
    EXPECT_EQ(bar()->accessibleName(), "Loading progress");
    EXPECT_EQ(button("browseButton")->accessibleName(), "Browse");
    EXPECT_EQ(button("refreshButton")->accessibleName(), "Refresh");
    EXPECT_EQ(button("loadButton")->accessibleName(), "Load");
    EXPECT_EQ(button("cancelButton")->accessibleName(), "Cancel");
    EXPECT_EQ(button("closeButton")->accessibleName(), "Close");
    EXPECT_EQ(child<QLabel>("logoLabel")->accessibleName(), "VEXA");
    EXPECT_TRUE(m_window->accessibleDescription().startsWith(
        "Welcome to VEXA database loader !\n1. Click 'Browse' to choose"));
}

} // namespace

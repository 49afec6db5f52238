// The list of terminals, and when a load is allowed.

#include "tests/window/scripted_window.h"

#include <QDir>
#include <QFileDialog>

namespace {

using listed_devices::reader;
using listed_devices::terminal;

class DevicesTest : public ScriptedWindowTest {};

TEST_F(DevicesTest, WithoutATerminalTheWindowOpensWithEverythingEnabled) {
    openWindow();
    EXPECT_EQ(listed(), QStringList());
    EXPECT_EQ(enabled(), kAtTheStart);
}

TEST_F(DevicesTest, TheFirstListShowsPortsWithoutTheirFolder) {
    listed_devices::serial = {terminal("T1", "/dev/cu.usbmodem1"), terminal("T2", "COM6"),
                              terminal("T3", "/devices/x"), terminal("T4", "x/dev/y")};
    listed_devices::readers = {reader("Reader 00 00")};
    openWindow();
    EXPECT_EQ(listed(),
              QStringList({"T1 - PORT: cu.usbmodem1", "T2 - PORT: COM6", "T3 - PORT: /devices/x",
                           "T4 - PORT: x/dev/y", "Reader 00 00 - PORT: PCSC"}));
    EXPECT_EQ(devices()->currentIndex(), 0);
    EXPECT_EQ(enabled(), kAtTheStart);
}

TEST_F(DevicesTest, ARefreshedListShowsWholePortsAndReadersByNameAlone) {
    listed_devices::serial = {terminal("T1", "/dev/cu.usbmodem1")};
    openWindow();
    listed_devices::serial = {terminal("T2", "/dev/cu.usbmodem2"), terminal("Térm", "COM6")};
    listed_devices::readers = {reader("Reader 00 00")};
    const LogCapture log;
    click("refreshButton");
    EXPECT_EQ(listed(),
              QStringList({"T2 - PORT: /dev/cu.usbmodem2", "Térm - PORT: COM6", "Reader 00 00"}));
    EXPECT_TRUE(log.contains("VEXALD => VEXAInterface::slot_loadDevices"));
    EXPECT_TRUE(log.contains("VEXALD Devices have been re-enumerated"));
    EXPECT_TRUE(log.contains("VEXALD Devices pushed into combo"));
    EXPECT_TRUE(log.contains("VEXALD <= VEXAInterface::slot_loadDevices"));
}

TEST_F(DevicesTest, ARefreshTwiceListsNothingTwice) {
    openWindow();
    for (int i = 0; i < 20; ++i) {
        listed_devices::serial.push_back(terminal("T", "/dev/ttyACM" + std::to_string(i)));
    }
    click("refreshButton");
    click("refreshButton");
    EXPECT_EQ(devices()->count(), 20);
    EXPECT_EQ(devices()->itemText(19), "T - PORT: /dev/ttyACM19");
    listed_devices::serial.clear();
    click("refreshButton");
    EXPECT_EQ(devices()->count(), 0);
}

TEST_F(DevicesTest, ALoadIsAllowedOnceThereAreATerminalAndAPath) {
    openWindow();
    click("refreshButton");
    EXPECT_FALSE(button("loadButton")->isEnabled());
    databaseField()->setText("/no/such.db");
    click("refreshButton");
    EXPECT_FALSE(button("loadButton")->isEnabled());
    listed_devices::serial = {terminal("T1", "/dev/ttyACM0")};
    click("refreshButton");
    EXPECT_TRUE(button("loadButton")->isEnabled());
    databaseField()->clear();
    click("refreshButton");
    EXPECT_FALSE(button("loadButton")->isEnabled());
}

class ChoosingTest : public ScriptedWindowTest {
protected:
    ChoosingTest() {
        (void)QDir().mkpath(path("bin/config"));
        (void)writeFile(configFile(), "#x\n&RecentPath=/old\n");
        (void)writeFile(chosen(), "x");
        m_dialogs.accepts = false;
    }

    QString configFile() const { return path("bin/config/VEXA_init.ini"); }
    QString chosen() const { return path("bin/donnée.db"); }

    /// Clicks on Browse and types a path into the dialog; an empty one cancels it.
    void browse(const QString& file) {
        m_dialogs.whileOpen = [this, file](QDialog& shown) {
            auto* dialog = qobject_cast<QFileDialog*>(&shown);
            ASSERT_NE(dialog, nullptr);
            m_folderShown = dialog->directory().path();
            m_filters = dialog->nameFilters();
            if (file.isEmpty()) {
                dialog->reject();
                return;
            }
            dialog->selectFile(file);
            (void)QMetaObject::invokeMethod(dialog, "accept");
        };
        click("browseButton");
    }

    QString m_folderShown;
    QStringList m_filters;
};

TEST_F(ChoosingTest, TheChosenDatabaseIsShownAndRemembered) {
    listed_devices::serial = {terminal("T1", "/dev/ttyACM0")};
    openWindow();
    browse(chosen());
    EXPECT_EQ(databaseField()->text(), chosen());
    EXPECT_EQ(readFile(configFile()), "#x\n&RecentPath=" + chosen().toUtf8() + "\n");
    EXPECT_TRUE(button("loadButton")->isEnabled());
    ASSERT_EQ(m_dialogs.shown().size(), 1U);
    EXPECT_EQ(m_dialogs.shown()[0].title, "Select a database");
    EXPECT_EQ(m_dialogs.shown()[0].parent, nullptr);
    EXPECT_EQ(m_filters, QStringList("Database Files (*.db)"));
}

TEST_F(ChoosingTest, ChoosingIsLogged) {
    openWindow();
    const LogCapture log;
    browse(QString());
    EXPECT_EQ(log.lines().front(), "VEXALD => VEXAInterface::slot_selectDb");
    EXPECT_EQ(log.lines().back(), "VEXALD <= VEXAInterface::slot_selectDb");
}

TEST_F(ChoosingTest, WithoutATerminalAChoiceDisallowsTheLoadAndARefreshAllowsIt) {
    openWindow();
    browse(chosen());
    EXPECT_FALSE(button("loadButton")->isEnabled());
    listed_devices::serial = {terminal("T1", "/dev/ttyACM0")};
    click("refreshButton");
    EXPECT_TRUE(button("loadButton")->isEnabled());
}

TEST_F(ChoosingTest, ACancelledDialogChangesNothing) {
    PreviousdbName = "/before.db";
    openWindow();
    browse("");
    EXPECT_EQ(databaseField()->text(), "/before.db");
    EXPECT_EQ(readFile(configFile()), "#x\n&RecentPath=/old\n");
    EXPECT_FALSE(button("loadButton")->isEnabled());
}

TEST_F(ChoosingTest, TheDialogOpensInTheRecentFolder) {
    storeText(g_configParams.RecentPath, path("bin").toUtf8().constData());
    openWindow();
    browse("");
    EXPECT_EQ(m_folderShown, path("bin"));
}

TEST_F(ChoosingTest, WithoutARecentFolderTheDialogOpensInTheCurrentOne) {
    openWindow();
    browse("");
    EXPECT_EQ(m_folderShown, QDir::currentPath());
}

TEST_F(ChoosingTest, TheNextDialogOpensWhereTheLastChoiceWas) {
    openWindow();
    browse(chosen());
    browse("");
    EXPECT_EQ(m_folderShown, path("bin"));
    EXPECT_EQ(databaseField()->text(), chosen());
}

} // namespace

// What of the toolkit's messages reaches the user, and what the log.

#include "app/toolkit_messages.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <QString>
#include <QtGlobal>

namespace {

std::vector<std::string> shown;

void show(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message) {
    shown.push_back(message.toStdString());
}

class ToolkitMessagesTest : public testing::Test {
protected:
    ToolkitMessagesTest() : m_before(qInstallMessageHandler(show)) {
        shown.clear();
        quietToolkit();
    }
    ~ToolkitMessagesTest() override { (void)qInstallMessageHandler(m_before); }

private:
    QtMessageHandler m_before;
};

TEST_F(ToolkitMessagesTest, HarmlessWarningsGoToTheLogOnly) {
    const LogCapture log;
    qWarning("QStandardPaths: wrong ownership on runtime directory /run/user/1000");
    qWarning("QSqlDatabasePrivate::addDatabase: duplicate connection name 'x', old one removed.");
    qWarning("QXcbConnection: XCB error: 8 (BadMatch), sequence: 8742");
    EXPECT_TRUE(shown.empty());
    EXPECT_TRUE(
        log.contains("VEXALD QStandardPaths: wrong ownership on runtime directory /run/user/1000"));
}

TEST_F(ToolkitMessagesTest, APluginThatDoesNotLoadIsShownUnlessTheDisplayIsMissing) {
    qInfo("Could not load the Qt platform plugin \"x\" in \"\" even though it was found.");
    EXPECT_EQ(shown.size(), 1U);
    qWarning("could not connect to display :9");
    qInfo("Could not load the Qt platform plugin \"x\" in \"\" even though it was found.");
    EXPECT_EQ(shown.size(), 1U);
}

TEST_F(ToolkitMessagesTest, AllOthersAreShownAsEver) {
    const LogCapture log;
    qWarning("something else");
    qCritical("QStandardPaths: more than a warning");
    EXPECT_EQ(shown,
              std::vector<std::string>({"something else", "QStandardPaths: more than a warning"}));
    EXPECT_TRUE(log.lines().empty());
}

} // namespace

#include "app/toolkit_messages.h"

#include "app/log.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kNoDisplayStatus = 69; // EX_UNAVAILABLE of sysexits.h

constexpr const char* kHarmlessWarnings[] = {
    "QStandardPaths: ",                                          // no runtime folder, as under sudo
    "QSqlDatabasePrivate::addDatabase: duplicate connection",    // the next load of a window
    "QSqlDatabasePrivate::removeDatabase: connection 'qt_sql_d", // likewise
    "Qt: Session management error",                              // a desktop of another user
    "QXcbConnection: XCB error",                                 // a window that has just gone
    "This plugin does not support",                              // a display without windows
};

/// What the toolkit says first of all when there is no display; the rest is said below.
constexpr char kNoDisplay[] = "could not connect to display";
constexpr char kNoPlugin[] = "Could not load the Qt platform plugin";

QtMessageHandler usualHandler = nullptr;
bool displayIsMissing = false;

/// Without a display the toolkit would abort the program, and the system might keep its corpse.
void endWithoutDisplay() {
    (void)std::fputs("VEXACharger: there is no display to show the window on.\n"
                     "To load from the command line, type: VEXACharger arg1 arg2 [arg3]\n"
                     "Type: 'VEXACharger -?' for help\n",
                     stderr);
    std::_Exit(kNoDisplayStatus);
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    const QByteArray text = message.toUtf8();
    const bool mayBeHarmless = type == QtWarningMsg || type == QtInfoMsg;
    for (const char* warning : kHarmlessWarnings) {
        if (mayBeHarmless && text.startsWith(warning)) {
            VEXALog(kLogInfo, "%s", text.constData());
            return;
        }
    }
    displayIsMissing = displayIsMissing || text.startsWith(kNoDisplay);
    if (displayIsMissing && type == QtFatalMsg) {
        endWithoutDisplay();
    }
    if (displayIsMissing && (text.startsWith(kNoDisplay) || text.startsWith(kNoPlugin))) {
        return;
    }
    usualHandler(type, context, message);
}

} // namespace

void quietToolkit() {
    usualHandler = qInstallMessageHandler(handleMessage);
}

#include "app/toolkit_messages.h"

#include "app/log.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace {

constexpr const char* kHarmlessWarnings[] = {
    "QStandardPaths: ",                                          // no runtime folder, as under sudo
    "QSqlDatabasePrivate::addDatabase: duplicate connection",    // the next load of a window
    "QSqlDatabasePrivate::removeDatabase: connection 'qt_sql_d", // likewise
};

QtMessageHandler usualHandler = nullptr;

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    const QByteArray text = message.toUtf8();
    for (const char* warning : kHarmlessWarnings) {
        if (type == QtWarningMsg && text.startsWith(warning)) {
            VEXALog(kLogInfo, "%s", text.constData());
            return;
        }
    }
    usualHandler(type, context, message);
}

} // namespace

void quietToolkit() {
    usualHandler = qInstallMessageHandler(handleMessage);
}

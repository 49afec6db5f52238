#include "db/db_manager.h"

#include "app/log.h"
#include "db/database_file.h"

#include <QSqlRecord>
#include <QString>
#include <QTextCodec>
#include <QTextEncoder>
#include <QVariant>

namespace {

constexpr int kTypeColumn = 2; // of the rows of PRAGMA table_info

/// A value as UTF-8. Taken in slices: the toolkit's own conversion asks for three bytes a character
/// at once and gives up at lengths that SQLite allows.
std::string toUtf8(const QVariant& value) {
    constexpr int kSlice = 1048576;
    const QString text = value.toString();
    if (text.size() <= kSlice) {
        return text.toStdString();
    }
    QTextEncoder encoder(QTextCodec::codecForName("UTF-8"), QTextCodec::IgnoreHeader);
    std::string utf8;
    for (int at = 0; at < text.size(); at += kSlice) {
        utf8 += encoder.fromUnicode(text.mid(at, kSlice)).toStdString();
    }
    return utf8;
}

/// A query of no connection. One built on an invalid connection would fall back to the default
/// connection, which is another manager's.
QSqlQuery noQuery() {
    return QSqlQuery(static_cast<QSqlResult*>(nullptr));
}

} // namespace

VEXADbManager::VEXADbManager() : query(noQuery()) {
    const FunctionTrace trace("VEXADbManager::VEXADbManager");
}

VEXADbManager::VEXADbManager(std::string path) : dbFile(path), query(noQuery()) {
    const FunctionTrace trace("VEXADbManager::VEXADbManager");
    db = QSqlDatabase::addDatabase("QSQLITE", QSqlDatabase::defaultConnection);
    db.setDatabaseName(absolutePath(path));
    if (!canBeRead(path)) {
        // SQLite would create the missing file, and an empty database would be loaded.
        db.setConnectOptions("QSQLITE_OPEN_READONLY");
    }
    if (db.open()) {
        VEXALog(kLogInfo, "Database is successully opened");
    } else {
        VEXALog(kLogError, "Error on opening database file");
    }
}

QSqlQuery VEXADbManager::runQuery(const QString& statement) {
    if (!db.isOpen()) {
        return noQuery();
    }
    QSqlQuery result(db);
    result.setForwardOnly(true);
    (void)result.exec(statement);
    return result;
}

void VEXADbManager::setQuery(std::string table) {
    const FunctionTrace trace("VEXADbManager::setQuery");
    query = getDataFromTable(table);
}

QSqlQuery VEXADbManager::getDataFromTable(std::string table) {
    const FunctionTrace trace("VEXADbManager::getDataFromTable");
    return runQuery("SELECT * FROM " + QString::fromStdString(table));
}

bool VEXADbManager::checkCoherence() {
    const FunctionTrace trace("VEXADbManager::checkCoherence");
    QSqlQuery check = runQuery("PRAGMA INTEGRITY_CHECK");
    const bool coherent = check.first() && check.value(0).toString() == QLatin1String("ok");
    if (coherent) {
        VEXALog(kLogInfo, "Database integrity check succeeded");
    } else {
        VEXALog(kLogError, "Error in database integrity check");
    }
    return coherent;
}

std::vector<std::string> VEXADbManager::getNextData(std::string table) {
    const FunctionTrace trace("VEXADbManager::getNextData");
    const std::size_t count = getFields(table).size();
    std::vector<std::string> row;
    if (!query.next()) {
        VEXALog(kLogInfo, "No next data");
        return row;
    }
    row.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        row.push_back(toUtf8(query.value(static_cast<int>(i))));
    }
    return row;
}

std::vector<sqlField> VEXADbManager::getFields(std::string table) {
    const FunctionTrace trace("VEXADbManager::getFields");
    QSqlQuery rows = getDataFromTable(table);
    (void)rows.first();
    const QSqlRecord columns = rows.record();
    VEXALog(kLogInfo, "Obtained number of fields");
    QSqlQuery description = runQuery("PRAGMA table_info(" + QString::fromStdString(table) + ")");
    (void)description.first();
    VEXALog(kLogInfo, "Obtained field type");
    std::vector<sqlField> fields;
    for (int i = 0; i < columns.count(); ++i) {
        // A generated column is in the rows and not in the description.
        const QVariant type = description.isValid() ? description.value(kTypeColumn) : QVariant();
        fields.push_back({columns.fieldName(i).toStdString(), toUtf8(type)});
        (void)description.next();
    }
    return fields;
}

std::vector<std::string> VEXADbManager::getTableNames() {
    const FunctionTrace trace("VEXADbManager::getTableNames");
    QSqlQuery tables = runQuery("SELECT name FROM main.sqlite_master WHERE type='table'");
    std::vector<std::string> names;
    while (tables.next()) {
        names.push_back(toUtf8(tables.value(0)));
    }
    return names;
}

std::string VEXADbManager::getDbFile() {
    const FunctionTrace trace("VEXADbManager::getDbFile");
    return dbFile;
}

void VEXADbManager::closeDatabase() {
    const FunctionTrace trace("VEXADbManager::closeDatabase");
    db.close();
}

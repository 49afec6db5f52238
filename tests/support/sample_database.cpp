#include "tests/support/sample_database.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>

namespace {

bool runAll(QSqlDatabase& database, const QStringList& statements) {
    QSqlQuery query(database);
    for (const QString& statement : statements) {
        if (!query.exec(statement)) {
            return false;
        }
    }
    return true;
}

bool fillUp(const QString& path, qint64 size) {
    QFile file(path);
    if (!file.open(QIODevice::Append) || file.size() > size) {
        return false;
    }
    QByteArray filling;
    filling.reserve(static_cast<int>(size - file.size()));
    for (qint64 i = file.size(); i < size; ++i) {
        filling.append(static_cast<char>((i >> 8) ^ i ^ (i >> 16)));
    }
    return file.write(filling) == filling.size();
}

} // namespace

bool makeDatabase(const QString& path, const QStringList& statements, qint64 fileSize) {
    constexpr char kConnection[] = "sample";
    bool made = false;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", kConnection);
        database.setDatabaseName(path);
        made = database.open() && runAll(database, statements);
        database.close();
    }
    QSqlDatabase::removeDatabase(kConnection);
    return made && (fileSize == 0 || fillUp(path, fileSize));
}

QStringList twoConcepts() {
    return {"CREATE TABLE R_DBINFO (NUM_CONCEPT INTEGER, VALUE TEXT)",
            "INSERT INTO R_DBINFO VALUES (1, 'alpha')", "INSERT INTO R_DBINFO VALUES (2, 'beta')"};
}

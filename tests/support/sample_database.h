// Databases for tests, made with SQLite itself.
#pragma once

#include <QString>
#include <QStringList>

/// Makes a database by running statements.
/// \param fileSize when not 0, the file is filled up to just this size with bytes that differ from
///                 place to place; SQLite ignores what lies behind its last page
/// \return false when a statement fails or the database is larger than that
bool makeDatabase(const QString& path, const QStringList& statements, qint64 fileSize = 0);

/// Statements for a table R_DBINFO that holds two concepts: 1 = "alpha", 2 = "beta".
QStringList twoConcepts();

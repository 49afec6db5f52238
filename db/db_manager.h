// The program's only access to the database file: integrity, tables, columns, rows.
//
// Owner: copies of a manager share one connection and one row cursor; the connection stays
//        registered when they are gone.
// Threads: a manager and its copies, one thread at a time.
// Failure: an SQL error is seen as an empty result, a failed opening as a failing integrity check.
#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>

#include <string>
#include <vector>

/// One column of a table.
struct sqlField {
    std::string name; ///< as the result set reports it, UTF-8
    std::string type; ///< declared type, UTF-8, possibly empty
};

class VEXADbManager {
public:
    /// A manager of no database: every operation gives an empty result.
    VEXADbManager();

    /// Opens a database file under the default connection name, which closes the connection of an
    /// earlier manager. SQLite may write: it completes what a crash has interrupted.
    /// \param path UTF-8
    explicit VEXADbManager(std::string path);
    VEXADbManager(const VEXADbManager&) = default;
    VEXADbManager& operator=(const VEXADbManager&) = default;
    virtual ~VEXADbManager() = default;

    /// Places the row cursor before the first row of a table.
    /// \param table inserted into the SQL text as it is
    void setQuery(std::string table);

    /// A query over all rows of a table, executed. It can only be walked forwards, so that a large
    /// table takes no more memory than a small one.
    QSqlQuery getDataFromTable(std::string table);

    /// Runs SQLite's integrity check over the whole file. \return true when nothing is wrong
    bool checkCoherence();

    /// Moves the row cursor of setQuery on by one row.
    /// \param table the table of setQuery
    /// \return the row's values as UTF-8, NULL as an empty text; empty after the last row
    std::vector<std::string> getNextData(std::string table);

    /// The columns of a table in their order, none when there is no such table.
    std::vector<sqlField> getFields(std::string table);

    /// The names of all tables of the main schema.
    std::vector<std::string> getTableNames();

    /// The path as it was given.
    std::string getDbFile();

    /// Closes the connection that all copies share.
    void closeDatabase();

private:
    QSqlQuery runQuery(const QString& statement);

    std::string dbFile;
    QSqlDatabase db;
    QSqlQuery query;
};

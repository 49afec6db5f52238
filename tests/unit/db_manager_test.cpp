#include "db/db_manager.h"
#include "tests/support/files.h"
#include "tests/support/log_capture.h"
#include "tests/support/sample_database.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

class DbManagerTest : public testing::Test {
protected:
    std::string path(const QString& name) const {
        return (m_folder.path() + "/" + name).toStdString();
    }

    std::string database(const QStringList& statements) {
        const std::string file = path("test.db");
        EXPECT_TRUE(makeDatabase(QString::fromStdString(file), statements));
        return file;
    }

    QTemporaryDir m_folder;
};

TEST_F(DbManagerTest, OpeningAndCheckingAreLogged) {
    const std::string file = database(twoConcepts());
    const LogCapture log;
    VEXADbManager manager(file);
    EXPECT_TRUE(manager.checkCoherence());
    EXPECT_EQ(manager.getDbFile(), file);
    EXPECT_EQ(
        log.lines(),
        Texts({"VEXALD => VEXADbManager::VEXADbManager", "VEXALD Database is successully opened",
               "VEXALD <= VEXADbManager::VEXADbManager", "VEXALD => VEXADbManager::checkCoherence",
               "VEXALD Database integrity check succeeded",
               "VEXALD <= VEXADbManager::checkCoherence", "VEXALD => VEXADbManager::getDbFile",
               "VEXALD <= VEXADbManager::getDbFile"}));
}

TEST_F(DbManagerTest, AFileThatIsNoDatabaseIsNotCoherent) {
    ASSERT_TRUE(writeFile(QString::fromStdString(path("text")), QByteArray(5000, 't')));
    VEXADbManager manager(path("text"));
    const LogCapture log;
    EXPECT_FALSE(manager.checkCoherence());
    EXPECT_TRUE(log.contains("VEXALD    Error in database integrity check"));
}

TEST_F(DbManagerTest, AFolderCannotBeOpened) {
    const LogCapture log;
    VEXADbManager manager(m_folder.path().toStdString());
    EXPECT_TRUE(log.contains("VEXALD    Error on opening database file"));
    EXPECT_FALSE(manager.checkCoherence());
    EXPECT_EQ(manager.getTableNames(), Texts());
    EXPECT_TRUE(manager.getFields("R_DBINFO").empty());
}

TEST_F(DbManagerTest, ATruncatedDatabaseIsNotCoherent) {
    QStringList statements = twoConcepts();
    statements << "CREATE TABLE filling (x)"
               << "INSERT INTO filling VALUES (zeroblob(40000))";
    const std::string file = database(statements);
    ASSERT_TRUE(QFile::resize(QString::fromStdString(file), 20000));
    EXPECT_FALSE(VEXADbManager(file).checkCoherence());
}

TEST_F(DbManagerTest, AnEmptyFileIsAnEmptyDatabase) {
    ASSERT_TRUE(writeFile(QString::fromStdString(path("empty")), ""));
    VEXADbManager manager(path("empty"));
    EXPECT_TRUE(manager.checkCoherence());
    EXPECT_EQ(manager.getTableNames(), Texts());
    EXPECT_EQ(readFile(QString::fromStdString(path("empty"))), "");
}

TEST_F(DbManagerTest, ADefaultManagerKnowsNothing) {
    VEXADbManager other(database(twoConcepts()));
    VEXADbManager none;
    EXPECT_EQ(none.getDbFile(), "");
    EXPECT_FALSE(none.checkCoherence());
    EXPECT_EQ(none.getTableNames(), Texts());
    EXPECT_EQ(none.getNextData("R_DBINFO"), Texts());
}

TEST_F(DbManagerTest, AllTablesAreListed) {
    VEXADbManager manager(
        database({"CREATE TABLE b (x INTEGER PRIMARY KEY AUTOINCREMENT)", "CREATE TABLE a (x)",
                  "CREATE VIEW v AS SELECT 1", "CREATE INDEX i ON a (x)"}));
    EXPECT_EQ(manager.getTableNames(), Texts({"b", "sqlite_sequence", "a"}));
}

TEST_F(DbManagerTest, ColumnsCarryTheirNamesAndDeclaredTypes) {
    VEXADbManager manager(
        database({"CREATE TABLE t (NUM_CONCEPT INTEGER, \"Prénom\" VARCHAR(20), untyped)",
                  "INSERT INTO t VALUES (1, 'x', 2)"}));
    const std::vector<sqlField> fields = manager.getFields("t");
    ASSERT_EQ(fields.size(), 3U);
    EXPECT_EQ(fields[0].name, "NUM_CONCEPT");
    EXPECT_EQ(fields[0].type, "INTEGER");
    EXPECT_EQ(fields[1].name, "Prénom");
    EXPECT_EQ(fields[1].type, "VARCHAR(20)");
    EXPECT_EQ(fields[2].name, "untyped");
    EXPECT_EQ(fields[2].type, "");
}

TEST_F(DbManagerTest, AnEmptyTableHasColumnsAndNoRows) {
    VEXADbManager manager(database({"CREATE TABLE t (a TEXT, b TEXT)"}));
    manager.setQuery("t");
    EXPECT_EQ(manager.getFields("t").size(), 2U);
    const LogCapture log;
    EXPECT_EQ(manager.getNextData("t"), Texts());
    EXPECT_TRUE(log.contains("VEXALD No next data"));
}

TEST_F(DbManagerTest, RowsComeOneByOneAndThenNone) {
    VEXADbManager manager(database(twoConcepts()));
    manager.setQuery("R_DBINFO");
    EXPECT_EQ(manager.getNextData("R_DBINFO"), Texts({"1", "alpha"}));
    EXPECT_EQ(manager.getNextData("R_DBINFO"), Texts({"2", "beta"}));
    EXPECT_EQ(manager.getNextData("R_DBINFO"), Texts());
    EXPECT_EQ(manager.getNextData("R_DBINFO"), Texts());
    manager.setQuery("R_DBINFO");
    EXPECT_EQ(manager.getNextData("R_DBINFO"), Texts({"1", "alpha"}));
}

TEST_F(DbManagerTest, ValuesOfEveryTypeBecomeTexts) {
    VEXADbManager manager(
        database({"CREATE TABLE t (a, b, c, d, e)",
                  "INSERT INTO t VALUES (NULL, 2.5, x'414200', 'é', 9223372036854775807)"}));
    manager.setQuery("t");
    EXPECT_EQ(manager.getNextData("t"), Texts({"", "2.5", "AB", "é", "9223372036854775807"}));
}

TEST_F(DbManagerTest, AnUnknownTableHasNeitherColumnsNorRows) {
    VEXADbManager manager(database(twoConcepts()));
    EXPECT_TRUE(manager.getFields("nowhere").empty());
    manager.setQuery("nowhere");
    EXPECT_EQ(manager.getNextData("nowhere"), Texts());
}

TEST_F(DbManagerTest, ADatabaseWithoutTablesListsNone) {
    VEXADbManager manager(database({"CREATE TABLE t (x)", "DROP TABLE t"}));
    EXPECT_TRUE(manager.checkCoherence());
    EXPECT_EQ(manager.getTableNames(), Texts());
}

TEST_F(DbManagerTest, ANullIsAnEmptyTextInItsPlace) {
    VEXADbManager manager(database({"CREATE TABLE t (a, b)", "INSERT INTO t VALUES (NULL, 'x')"}));
    manager.setQuery("t");
    EXPECT_EQ(manager.getNextData("t"), Texts({"", "x"}));
}

TEST_F(DbManagerTest, AValueOfMillionsOfCharactersComesWhole) {
    VEXADbManager manager(
        database({"CREATE TABLE t (a)",
                  "INSERT INTO t VALUES (replace(hex(zeroblob(1048576)), '00', 'aé'))"}));
    manager.setQuery("t");
    const Texts row = manager.getNextData("t");
    ASSERT_EQ(row.size(), 1U);
    EXPECT_EQ(row[0].size(), 3U * 1048576);
    EXPECT_EQ(row[0].substr(3U * 1048576 - 6), "aéaé");
}

TEST_F(DbManagerTest, AMissingFileIsNotMade) {
    const LogCapture log;
    VEXADbManager manager(path("nowhere.db"));
    EXPECT_TRUE(log.contains("VEXALD    Error on opening database file"));
    EXPECT_FALSE(manager.checkCoherence());
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path("nowhere.db"))));
}

TEST_F(DbManagerTest, OnceClosedThereAreNoRows) {
    VEXADbManager manager(database(twoConcepts()));
    manager.setQuery("R_DBINFO");
    manager.closeDatabase();
    EXPECT_EQ(manager.getNextData("R_DBINFO"), Texts());
}

TEST_F(DbManagerTest, ACopySharesTheConnectionAndTheCursor) {
    VEXADbManager manager(database(twoConcepts()));
    manager.setQuery("R_DBINFO");
    EXPECT_EQ(manager.getNextData("R_DBINFO"), Texts({"1", "alpha"}));
    VEXADbManager copy(manager);
    EXPECT_EQ(copy.getNextData("R_DBINFO"), Texts({"2", "beta"}));
    manager.closeDatabase();
    EXPECT_FALSE(copy.checkCoherence());
}

TEST_F(DbManagerTest, ASecondManagerTakesOverTheDefaultConnection) {
    VEXADbManager first(database(twoConcepts()));
    EXPECT_TRUE(first.checkCoherence());
    ASSERT_TRUE(makeDatabase(QString::fromStdString(path("second.db")), {"CREATE TABLE s (x)"}));
    VEXADbManager second(path("second.db"));
    EXPECT_EQ(second.getTableNames(), Texts({"s"}));
    EXPECT_EQ(QSqlDatabase::database().databaseName().toStdString(), path("second.db"));
}

TEST_F(DbManagerTest, TheConnectionOutlivesTheManager) {
    { const VEXADbManager manager(database(twoConcepts())); }
    EXPECT_TRUE(QSqlDatabase::database(QSqlDatabase::defaultConnection, false).isOpen());
}

} // namespace

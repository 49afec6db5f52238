// What the tests of a loading session share: a terminal of the test's making and a database.
#pragma once

#include "app/run_mode.h"
#include "loader/usb_connector.h"
#include "tests/support/files.h"
#include "tests/support/log_capture.h"
#include "tests/support/sample_database.h"
#include "tests/support/scripted_ports.h"

#include <gtest/gtest.h>

class SessionTest : public testing::Test {
protected:
    SessionTest() {
        scripted_ports::reset();
        g_inCmdMode = false;
    }

    QString path(const QString& name) const { return m_folder.path() + "/" + name; }

    /// A database of two concepts, of just this size.
    VEXADbManager databaseOf(qint64 size) { return database(smallPages(twoConcepts()), size); }

    VEXADbManager database(const QStringList& statements, qint64 size = 0) {
        const QString file = path("test.db");
        (void)QFile::remove(file);
        EXPECT_TRUE(makeDatabase(file, statements, size));
        return VEXADbManager(file.toStdString());
    }

    /// Pages of 512 bytes, so that small files can be made.
    static QStringList smallPages(QStringList statements) {
        statements.prepend("PRAGMA page_size=512");
        return statements;
    }

    static VEXADevice terminal() { return {"/sys/t", "/dev/ttyACM7", "T - x", "F055", "0012"}; }

    static void answer(std::initializer_list<const char*> hexadecimal) {
        for (const char* text : hexadecimal) {
            scripted_ports::answers.push_back(QByteArray::fromHex(text));
        }
    }

    /// The answers of PAD 2 up to the acceptance of the load.
    static void acceptLoad() { answer({"F2E0040078012C45BB", "F240020000212A"}); }

    static QByteArray sent(std::size_t number) {
        return number <= scripted_ports::exchanges.size()
                   ? scripted_ports::exchanges[number - 1].frame.toHex().toUpper()
                   : QByteArray("nothing");
    }

    QTemporaryDir m_folder;
};

// What the tests of VEXA_init.ini share: an executable in a folder of its own, and a user's home.
#pragma once

#include "app/run_mode.h"
#include "configuration/config_location.h"
#include "configuration/config_reader.h"
#include "configuration/config_writer.h"
#include "tests/support/chosen_executable.h"
#include "tests/support/default_config.h"
#include "tests/support/files.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <QDir>

#include <sys/stat.h>

using Lines = std::vector<std::string>;

// Fourteen settings, the least that makes a file valid.
inline const QByteArray kValid =
    "&LogOption=0\n&LogPath=.\n&RecentPath=/home/x\n&ApplicationName=App\n"
    "&Database_file=D\n&Browse=B\n&Device_list=L\n&Button_load=Go\n"
    "&PAD_number=7\n&Loading_progress=P\n&Cancel=C\n&Renew_devices=R\n"
    "&Close_application=X\n&ExplicativeText=E";

class ConfigFileTest : public testing::Test {
protected:
    ConfigFileTest() {
        // An ordinary user must be able to look into it.
        (void)chmod(m_folder.path().toUtf8().constData(), 0777);
        (void)QDir().mkpath(path("bin"));
        (void)QDir().mkpath(path("home"));
        chosenExecutable = (path("bin") + "/VEXACharger").toStdString();
        qputenv("HOME", path("home").toUtf8());
        g_inCmdMode = true;
        PreviousdbName.clear();
    }
    ~ConfigFileTest() override {
        VEXA_logstop();
        g_inCmdMode = false;
    }

    QString path(const QString& name) const { return m_folder.path() + "/" + name; }
    QString file() const { return path("bin/config/VEXA_init.ini"); }

    void writeConfigFile(const QByteArray& content) {
        ASSERT_TRUE(QDir().mkpath(path("bin/config")));
        ASSERT_TRUE(writeFile(file(), content));
    }

    bool isValid(const QByteArray& content) {
        writeConfigFile(content);
        return checkConfigFile(file().toUtf8().data());
    }

    QTemporaryDir m_folder;
};

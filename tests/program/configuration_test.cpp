// What users do to the configuration file, and what the program makes of it. Every mistake must
// leave a program that works and a file that is either what the user wrote or the default one.

#include "tests/program/program_test.h"

#include <QDir>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

namespace {

class ConfigurationTest : public ProgramTest {
protected:
    /// Starts the program with a file and tells what the file is afterwards.
    QByteArray fileAfter(const QByteArray& content) {
        configure(content);
        EXPECT_EQ(charger({"-?"}).status, 11);
        return readFile(configFile());
    }

    /// The log of a start with a file, to which the log settings are added at its head.
    QStringList logWith(const QByteArray& content) {
        configure("&LogOption=1\n&LogPath=" + path("log").toUtf8() + "\n" + content);
        EXPECT_EQ(charger({"-?"}).status, 11);
        return logLines(path("log/logVEXA.txt"));
    }

    /// True when the log switch, given at this place of the file, opened the log.
    bool logs(const QByteArray& content) {
        (void)QFile::remove(path("log/logVEXA.txt"));
        configure(content);
        EXPECT_EQ(charger({"-?"}).status, 11);
        return QFile::exists(path("log/logVEXA.txt"));
    }

    QByteArray withLog() const {
        return defaultConfig()
            .replace("&LogOption=0", "&LogOption=1")
            .replace("&LogPath=.", "&LogPath=" + path("log").toUtf8());
    }
};

TEST_F(ConfigurationTest, AMissingFileIsCreated) {
    EXPECT_EQ(charger({"-?"}).status, 11);
    EXPECT_EQ(readFile(configFile()), defaultConfig());
    EXPECT_EQ(QDir(path("bin/config")).entryList(QDir::Files), QStringList({"VEXA_init.ini"}));
}

TEST_F(ConfigurationTest, AFileThatHoldsNoSettingsIsReplaced) {
    EXPECT_EQ(fileAfter(""), defaultConfig());
    EXPECT_EQ(fileAfter("\n\n\n"), defaultConfig());
    EXPECT_EQ(fileAfter("# only a comment"), defaultConfig());
    EXPECT_EQ(fileAfter(QByteArray(100000, '\0')), defaultConfig());
    QByteArray binary;
    for (int i = 0; i < 200000; ++i) {
        binary.append(static_cast<char>(i * 7919 >> 3));
    }
    EXPECT_EQ(fileAfter(binary), defaultConfig());
    EXPECT_EQ(fileAfter(QByteArray(50000000, 'x')), defaultConfig());
    EXPECT_EQ(fileAfter(QByteArray(50000000, '&')), defaultConfig());
}

TEST_F(ConfigurationTest, AFileOfAnotherKindIsReplaced) {
    // Saved as UTF-16, and as a text without line ends.
    QByteArray wide("\xFF\xFE");
    for (const char c : defaultConfig()) {
        wide.append(c).append('\0');
    }
    EXPECT_EQ(fileAfter(wide), defaultConfig());
    EXPECT_EQ(fileAfter(defaultConfig().replace("\n", " ")), defaultConfig());
}

// --- A missing or misspelt setting makes the file invalid.

TEST_F(ConfigurationTest, ASettingWasDeleted) {
    EXPECT_EQ(fileAfter(defaultConfig().replace("&Cancel=Annuler\n", "")), defaultConfig());
}

TEST_F(ConfigurationTest, ASettingWasCommentedOut) {
    EXPECT_EQ(fileAfter(defaultConfig().replace("&Browse=", "#&Browse=")), defaultConfig());
}

TEST_F(ConfigurationTest, TheInstructionsWereDeleted) {
    QByteArray content = defaultConfig();
    EXPECT_EQ(fileAfter(content.replace("&ExplicativeText=", "#")), defaultConfig());
}

TEST_F(ConfigurationTest, AKeyWasWrittenInLowerCase) {
    EXPECT_EQ(fileAfter(defaultConfig().replace("&LogOption=", "&logoption=")), defaultConfig());
}

TEST_F(ConfigurationTest, AnAmpersandWasDropped) {
    EXPECT_EQ(fileAfter(defaultConfig().replace("&Device_list=", "Device_list=")), defaultConfig());
}

TEST_F(ConfigurationTest, BlanksWereSetAroundAnEqualsSign) {
    EXPECT_EQ(fileAfter(defaultConfig().replace("&Cancel=Annuler", "&Cancel = Annuler")),
              defaultConfig());
}

TEST_F(ConfigurationTest, ASettingWasIndented) {
    EXPECT_EQ(fileAfter(defaultConfig().replace("&Cancel=", "  &Cancel=")), defaultConfig());
}

// --- These mistakes leave the file as it is.

TEST_F(ConfigurationTest, AValueWasDeleted) {
    const QByteArray content = defaultConfig().replace("&Cancel=Annuler", "&Cancel=");
    EXPECT_EQ(fileAfter(content), content);
    EXPECT_TRUE(logWith(content).contains("VEXALD parse_variable : Tag empty : Cancel="));
}

TEST_F(ConfigurationTest, AnEqualsSignWasDropped) {
    // Another setting stands twice, so that the file is valid.
    const QStringList log =
        logWith(defaultConfig().replace("&Cancel=Annuler", "&Cancel\n&Browse=Parcourir"));
    EXPECT_TRUE(log.contains("VEXALD parse_variable : Tag empty : Cancel"));
    EXPECT_TRUE(log.contains("VEXALD Cancel="));
}

TEST_F(ConfigurationTest, AValueHoldsAnEqualsSign) {
    EXPECT_TRUE(logWith(defaultConfig().replace("&Cancel=Annuler", "&Cancel=a=b"))
                    .contains("VEXALD Cancel=a=b"));
}

TEST_F(ConfigurationTest, ASettingStandsTwice) {
    const QByteArray content =
        defaultConfig().replace("&Cancel=Annuler", "&Cancel=Annuler\n&Cancel=Stop");
    EXPECT_EQ(fileAfter(content), content);
    EXPECT_TRUE(logWith(content).contains("VEXALD Cancel=Stop"));
}

TEST_F(ConfigurationTest, ASettingThatDoesNotExistWasAdded) {
    const QByteArray content = "&Colour=blue\n&VendorID=1\n" + defaultConfig();
    EXPECT_EQ(fileAfter(content), content);
    EXPECT_TRUE(logWith(content).contains("VEXALD 2 supported device(s)"));
}

TEST_F(ConfigurationTest, AKeyWasAbbreviated) {
    const QStringList log = logWith(defaultConfig() + "\n&Can=Stop\n&V=0403\n&=/recent\n#");
    EXPECT_TRUE(log.contains("VEXALD Cancel=Stop"));
    EXPECT_TRUE(log.contains("VEXALD RecentPath=/recent"));
    EXPECT_TRUE(log.contains("VEXALD parse_variable : VID = 0403 (0403)"));
}

TEST_F(ConfigurationTest, BlanksWereLeftAtTheEndOfALine) {
    EXPECT_TRUE(logWith(defaultConfig().replace("&Cancel=Annuler", "&Cancel=Annuler  "))
                    .contains("VEXALD Cancel=Annuler  "));
}

TEST_F(ConfigurationTest, TheFileWasSavedWithCarriageReturns) {
    const QStringList log = logWith(defaultConfig().replace("\n", "\r\n"));
    EXPECT_TRUE(log.contains("VEXALD Cancel=Annuler"));
    EXPECT_TRUE(log.contains("VEXALD VID=" VEXA_VENDOR_ID " - PID=0012"));
}

TEST_F(ConfigurationTest, AValueIsLongerThanALine) {
    const QStringList log =
        logWith(defaultConfig().replace("&Cancel=Annuler", "&Cancel=" + QByteArray(1000, 'a')));
    EXPECT_TRUE(log.contains("VEXALD Cancel=" + QString(119, 'a')));
}

TEST_F(ConfigurationTest, ALineBreakWasAddedAtTheEnd) {
    const QStringList log = logWith(defaultConfig() + "\n");
    EXPECT_EQ(log.count("VEXALD parse_variable : PID = 0012 (0012)"), 3);
    EXPECT_TRUE(log.contains("VEXALD 2 supported device(s)"));
}

TEST_F(ConfigurationTest, AnIdentifierLacksItsPartner) {
    const QStringList log = logWith(defaultConfig() + "\n&VID=0403\n#");
    EXPECT_TRUE(log.contains("VEXALD 2 supported device(s)"));
    EXPECT_FALSE(log.contains("VEXALD VID=0403 - PID="));
}

TEST_F(ConfigurationTest, NoIdentifiersAreLeft) {
    const QStringList log =
        logWith(defaultConfig().replace("&VID=" VEXA_VENDOR_ID, "#").replace("&PID=0012", "#"));
    EXPECT_TRUE(log.contains("VEXALD 0 supported device(s)"));
}

// --- The log switch

TEST_F(ConfigurationTest, TheLogIsSwitchedOnByJustOne) {
    EXPECT_TRUE(logs(withLog()));
    for (const char* value :
         {"&LogOption=0", "&LogOption=1 ", "&LogOption=yes", "&LogOption=01", "&LogOption="}) {
        EXPECT_FALSE(logs(withLog().replace("&LogOption=1", value))) << value;
    }
}

TEST_F(ConfigurationTest, TheLogSwitchStandsBelowTheLogFolder) {
    EXPECT_FALSE(logs(withLog().replace("&LogOption=1\n", "") + "\n&LogOption=1"));
}

// --- Where the file lies

TEST_F(ConfigurationTest, AFileThatCannotBeReadIsNoReasonToFail) {
    configure(defaultConfig());
    ASSERT_TRUE(QFile::setPermissions(configFile(), QFile::Permissions()));
    const Outcome outcome = run(asOrdinaryUser({executable(), "-?"}));
    EXPECT_EQ(outcome.status, 11);
    EXPECT_EQ(outcome.out, QByteArray(kUsage) + "\nReturned value : 11");
}

TEST_F(ConfigurationTest, AFolderInThePlaceOfTheFileIsNoReasonToFail) {
    ASSERT_TRUE(QDir().mkpath(configFile()));
    EXPECT_EQ(charger({"-?"}).status, 11);
    EXPECT_TRUE(QFileInfo(configFile()).isDir());
}

TEST_F(ConfigurationTest, AFileInThePlaceOfTheFolderIsNoReasonToFail) {
    ASSERT_TRUE(writeFile(path("bin/config"), "a file"));
    EXPECT_EQ(charger({"-?"}).status, 11);
    EXPECT_EQ(readFile(path("bin/config")), "a file");
}

TEST_F(ConfigurationTest, AnInstalledProgramUsesTheUsersFolder) {
    ASSERT_EQ(chmod(path("bin").toUtf8().constData(), 0555), 0);
    EXPECT_EQ(run(asOrdinaryUser({executable(), "-?"})).status, 11);
    ASSERT_EQ(chmod(path("bin").toUtf8().constData(), 0777), 0);
    EXPECT_FALSE(QFile::exists(path("bin/config")));
    EXPECT_EQ(readFile(path("home/.config/VEXACharger/config/VEXA_init.ini")), defaultConfig());
}

TEST_F(ConfigurationTest, AnInstalledProgramIsFoundThroughALink) {
    ASSERT_TRUE(QFile::link(executable(), path("home/vexacharger")));
    EXPECT_EQ(run({path("home/vexacharger"), "-?"}).status, 11);
    EXPECT_EQ(readFile(configFile()), defaultConfig());
}

TEST_F(ConfigurationTest, AProgramInADeepFolderFindsItsFile) {
    const QString deep = path("bin/" + QString(60, 'd') + "/" + QString(60, 'e') + "/é");
    ASSERT_TRUE(QDir().mkpath(deep));
    ASSERT_TRUE(QFile::rename(executable(), deep + "/VEXACharger"));
    EXPECT_EQ(run({deep + "/VEXACharger", "-?"}).status, 11);
    EXPECT_EQ(readFile(deep + "/config/VEXA_init.ini"), defaultConfig());
}

} // namespace

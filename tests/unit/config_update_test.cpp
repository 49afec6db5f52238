// Update of VEXA_init.ini, and where it lies.

#include "tests/support/unprivileged.h"
#include "tests/unit/config_file_fixture.h"

#include <csignal>
#include <sys/resource.h>

namespace {

using ConfigUpdateTest = ConfigFileTest;

// --- Update of the recent folder

TEST_F(ConfigUpdateTest, TheRecentPathIsReplacedAndTheFileEndsWithALineFeed) {
    writeConfigFile("#one\r\n&RecentPath=/old\n\n&Browse=B");
    writeConfig("/new");
    EXPECT_EQ(readFile(file()), "#one\r\n&RecentPath=/new\n\n&Browse=B\n");
}

TEST_F(ConfigUpdateTest, AFinalLineFeedIsNotDoubled) {
    writeConfigFile("&RecentPath=/old\n");
    writeConfig("/new");
    writeConfig("/newer");
    EXPECT_EQ(readFile(file()), "&RecentPath=/newer\n");
}

TEST_F(ConfigUpdateTest, BothRecentPathLinesAreReplaced) {
    writeConfigFile("&RecentPath=a\n&RecentPath=b\r\n#&RecentPath=c\n");
    writeConfig("/new");
    EXPECT_EQ(readFile(file()), "&RecentPath=/new\n&RecentPath=/new\n#&RecentPath=c\n");
}

TEST_F(ConfigUpdateTest, AFileWithoutARecentPathOnlyGainsTheLineFeed) {
    writeConfigFile("&Browse=B");
    writeConfig("/new");
    EXPECT_EQ(readFile(file()), "&Browse=B\n");
}

TEST_F(ConfigUpdateTest, ANonAsciiPathIsWrittenAsItsUtf8) {
    writeConfigFile("&RecentPath=\n");
    writeConfig("/données/é");
    EXPECT_EQ(readFile(file()), "&RecentPath=/données/é\n");
}

TEST_F(ConfigUpdateTest, AfterTheUpdateTheDefaultFileHasAThirdProductIdAndStillTwoPairs) {
    VEXAConfig cfg{};
    config_from_file(&cfg);
    writeConfig("/new");
    config_from_file(&cfg);
    EXPECT_EQ(cfg.PID, Lines({"0012", "0012", "0012"}));
    EXPECT_EQ(cfg.VID.size(), 2U);
    EXPECT_EQ(supportedDeviceCount(cfg), 2U);
    EXPECT_STREQ(cfg.RecentPath, "/new");
}

TEST_F(ConfigUpdateTest, AMissingFileIsLeftEmptyByTheUpdate) {
    ASSERT_TRUE(QDir().mkpath(path("bin/config")));
    writeConfig("/new");
    EXPECT_TRUE(QFile::exists(file()));
    EXPECT_EQ(readFile(file()), "");
}

TEST_F(ConfigUpdateTest, AnUpdateOnAFullDiskLeavesTheFileAsItWas) {
    writeConfigFile(kValid);
    (void)chmod(path("bin/config").toUtf8().constData(), 0777);
    (void)chmod(path("bin").toUtf8().constData(), 0777);
    (void)chmod(file().toUtf8().constData(), 0666);
    EXPECT_TRUE(asOrdinaryUser([] {
        // As on a full disk, no file can grow beyond its first bytes.
        const rlimit limit = {20, 20};
        (void)std::signal(SIGXFSZ, SIG_IGN);
        (void)setrlimit(RLIMIT_FSIZE, &limit);
        writeConfig("/new");
        return true;
    }));
    EXPECT_EQ(readFile(file()), kValid);
    EXPECT_EQ(QDir(path("bin/config")).entryList(QDir::Files), QStringList({"VEXA_init.ini"}));
}

// --- Location

TEST_F(ConfigUpdateTest, AnUnknownExecutableMeansTheCurrentFolder) {
    chosenExecutable.clear();
    ASSERT_TRUE(QDir::setCurrent(path("home")));
    const LogCapture log;
    VEXAConfig cfg{};
    config_from_file(&cfg);
    writeConfig("/new");
    EXPECT_EQ(log.count("VEXALD    config_from_file : readlink() failed"), 1U);
    EXPECT_EQ(log.count("VEXALD    writeConfig : readlink() failed"), 1U);
    EXPECT_TRUE(readFile(path("home/config/VEXA_init.ini")).contains("&RecentPath=/new\n"));
}

TEST_F(ConfigUpdateTest, AnInstalledProgramKeepsItsSettingsInTheUsersFolder) {
    (void)chmod(path("home").toUtf8().constData(), 0777);
    (void)chmod(path("bin").toUtf8().constData(), 0555);
    EXPECT_TRUE(asOrdinaryUser([] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        writeConfig("/new");
        return std::string(cfg.Browse) == "Parcourir";
    }));
    (void)chmod(path("bin").toUtf8().constData(), 0755);
    EXPECT_FALSE(QFile::exists(path("bin/config")));
    EXPECT_TRUE(readFile(path("home/.config/VEXACharger/config/VEXA_init.ini"))
                    .contains("&RecentPath=/new\n"));
}

TEST_F(ConfigUpdateTest, AReadOnlyFileBesideTheProgramStartsTheUsersCopy) {
    writeConfigFile(kValid);
    (void)chmod(path("home").toUtf8().constData(), 0777);
    (void)chmod(file().toUtf8().constData(), 0444);
    EXPECT_TRUE(asOrdinaryUser([] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        writeConfig("/new");
        return std::string(cfg.Button_load) == "Go";
    }));
    EXPECT_EQ(readFile(file()), kValid);
    EXPECT_EQ(readFile(path("home/.config/VEXACharger/config/VEXA_init.ini")),
              QByteArray(kValid).replace("&RecentPath=/home/x", "&RecentPath=/new") + "\n");
}

TEST_F(ConfigUpdateTest, TheUsersCopyIsNotStartedAgain) {
    writeConfigFile(kValid);
    (void)chmod(path("home").toUtf8().constData(), 0777);
    (void)chmod(file().toUtf8().constData(), 0444);
    const QString own = path("home/.config/VEXACharger/config/VEXA_init.ini");
    EXPECT_TRUE(asOrdinaryUser([&] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        (void)writeFile(own, QByteArray(kValid).replace("=Go", "=Mine"));
        config_from_file(&cfg);
        return std::string(cfg.Button_load) == "Mine";
    }));
}

TEST_F(ConfigUpdateTest, WithoutAHomeTheFileBesideTheProgramIsReadAsItIs) {
    writeConfigFile(kValid);
    (void)chmod(file().toUtf8().constData(), 0444);
    qunsetenv("HOME");
    EXPECT_TRUE(asOrdinaryUser([] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        return std::string(cfg.Button_load) == "Go";
    }));
}

TEST_F(ConfigUpdateTest, ARelativeHomeIsNoHome) {
    writeConfigFile(kValid);
    (void)chmod(file().toUtf8().constData(), 0444);
    (void)chmod(path("home").toUtf8().constData(), 0777);
    ASSERT_TRUE(QDir::setCurrent(path("home")));
    qputenv("HOME", "here");
    EXPECT_TRUE(asOrdinaryUser([] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        return std::string(cfg.Button_load) == "Go";
    }));
    EXPECT_FALSE(QFile::exists(path("home/here")));
}

TEST_F(ConfigUpdateTest, AReadOnlyConfigFolderMeansTheUsersFolder) {
    writeConfigFile(kValid);
    (void)chmod(path("home").toUtf8().constData(), 0777);
    (void)chmod(path("bin").toUtf8().constData(), 0777);
    (void)chmod(file().toUtf8().constData(), 0666);
    (void)chmod(path("bin/config").toUtf8().constData(), 0555);
    EXPECT_TRUE(asOrdinaryUser([] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        return std::string(cfg.Button_load) == "Go";
    }));
    EXPECT_EQ(readFile(path("home/.config/VEXACharger/config/VEXA_init.ini")), kValid);
}

TEST_F(ConfigUpdateTest, AUsersFolderThatCannotBeMadeMeansTheFileBesideTheProgram) {
    writeConfigFile(kValid);
    (void)chmod(file().toUtf8().constData(), 0444);
    (void)chmod(path("home").toUtf8().constData(), 0555);
    EXPECT_TRUE(asOrdinaryUser([] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        writeConfig("/new");
        return std::string(cfg.Button_load) == "Go";
    }));
    EXPECT_EQ(readFile(file()), kValid);
}

TEST_F(ConfigUpdateTest, AFileBesideTheProgramThatMayNotBeReadLeavesTheUserTheDefaults) {
    writeConfigFile(kValid);
    (void)chmod(file().toUtf8().constData(), 0);
    (void)chmod(path("home").toUtf8().constData(), 0777);
    EXPECT_TRUE(asOrdinaryUser([] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        return std::string(cfg.Button_load) == "Charger";
    }));
    EXPECT_EQ(readFile(path("home/.config/VEXACharger/config/VEXA_init.ini")), defaultConfig());
}

TEST_F(ConfigUpdateTest, AnUpdateByRootLeavesTheFileToItsOwner) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    writeConfigFile(kValid);
    ASSERT_EQ(chown(file().toUtf8().constData(), kNobody, kNobody), 0);
    writeConfig("/new");
    struct stat status {};
    ASSERT_EQ(stat(file().toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_uid, kNobody);
    EXPECT_TRUE(readFile(file()).contains("&RecentPath=/new\n"));
}

TEST_F(ConfigUpdateTest, APipeInThePlaceOfTheFileIsInvalidAndKeepsNobodyWaiting) {
    ASSERT_TRUE(QDir().mkpath(path("bin/config")));
    ASSERT_EQ(mkfifo(file().toUtf8().constData(), 0666), 0);
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_STREQ(cfg.Button_load, "Charger");
    EXPECT_EQ(readFile(file()), defaultConfig());
}

TEST_F(ConfigUpdateTest, AFileOfSomebodyElseStaysTheirs) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can play two users";
    }
    writeConfigFile(kValid);
    (void)chmod(path("bin").toUtf8().constData(), 0777);
    (void)chmod(path("bin/config").toUtf8().constData(), 0777);
    (void)chmod(file().toUtf8().constData(), 0666);
    EXPECT_TRUE(asOrdinaryUser([] {
        writeConfig("/new");
        return true;
    }));
    struct stat status {};
    ASSERT_EQ(stat(file().toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_TRUE(readFile(file()).contains("&RecentPath=/new\n"));
}

TEST_F(ConfigUpdateTest, AFileThatCannotBeReplacedIsWrittenOver) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can play two users";
    }
    // In a sticky folder, as /tmp is, nobody can rename over another one's file.
    writeConfigFile("junk");
    (void)chmod(path("bin").toUtf8().constData(), 0777);
    (void)chmod(path("bin/config").toUtf8().constData(), 01777);
    (void)chmod(file().toUtf8().constData(), 0666);
    EXPECT_TRUE(asOrdinaryUser([] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        return std::string(cfg.Button_load) == "Charger";
    }));
    EXPECT_EQ(readFile(file()), defaultConfig());
    EXPECT_EQ(QDir(path("bin/config")).entryList(QDir::Files), QStringList({"VEXA_init.ini"}));
}

TEST_F(ConfigUpdateTest, AFileBeyondAMebibyteStartsNoCopy) {
    writeConfigFile(kValid + "\n" + QByteArray(1048576, '#'));
    (void)chmod(file().toUtf8().constData(), 0444);
    (void)chmod(path("home").toUtf8().constData(), 0777);
    EXPECT_TRUE(asOrdinaryUser([] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        return std::string(cfg.Button_load) == "Charger";
    }));
    EXPECT_EQ(readFile(path("home/.config/VEXACharger/config/VEXA_init.ini")), defaultConfig());
}

TEST_F(ConfigUpdateTest, AFileThatMayBeWrittenAndNotReadEndsUpEmpty) {
    writeConfigFile(kValid);
    (void)chmod(path("bin").toUtf8().constData(), 0777);
    (void)chmod(path("bin/config").toUtf8().constData(), 0777);
    (void)chmod(file().toUtf8().constData(), 0222);
    EXPECT_TRUE(asOrdinaryUser([] {
        writeConfig("/new");
        return true;
    }));
    EXPECT_EQ(QFileInfo(file()).size(), 0);
}

} // namespace

// Reading, validation, creation and update of VEXA_init.ini.

#include "app/run_mode.h"
#include "configuration/config_location.h"
#include "configuration/config_reader.h"
#include "configuration/config_writer.h"
#include "tests/support/chosen_executable.h"
#include "tests/support/files.h"
#include "tests/support/log_capture.h"
#include "tests/support/unprivileged.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using Lines = std::vector<std::string>;

// Fourteen settings, the least that makes a file valid.
const QByteArray kValid = "&LogOption=0\n&LogPath=.\n&RecentPath=/home/x\n&ApplicationName=App\n"
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

VEXAConfig afterLine(const char* line) {
    VEXAConfig cfg{};
    std::string text = line;
    parse_variable(text.data(), &cfg);
    return cfg;
}

QByteArray defaultFile() {
    return readFile(VEXA_TEST_DATA "/VEXA_init.ini");
}

// --- Creation

TEST_F(ConfigFileTest, AMissingFileIsCreatedWithTheFrenchDefaultsAndRead) {
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_EQ(readFile(file()), defaultFile());
    EXPECT_STREQ(cfg.ApplicationName, "VEXA Chargeur");
    EXPECT_STREQ(cfg.PAD_number, "Numéro de PAD");
    EXPECT_STREQ(cfg.LogOption, "0");
    EXPECT_STREQ(cfg.LogPath, ".");
    EXPECT_STREQ(cfg.RecentPath, "");
    EXPECT_STREQ(cfg.copyright, "");
    EXPECT_EQ(cfg.VID, Lines({"f055", "f055"}));
    EXPECT_EQ(cfg.PID, Lines({"0012", "0012"}));
    EXPECT_EQ(cfg.ExplicativeText.size(), 6U);
    EXPECT_EQ(cfg.ExplicativeText[1], "[TAB]");
}

TEST_F(ConfigFileTest, TheFolderIsMadeWithRightsForTheGroup) {
    const mode_t before = umask(0);
    VEXAConfig cfg{};
    config_from_file(&cfg);
    (void)umask(before);
    struct stat status {};
    ASSERT_EQ(stat(path("bin/config").toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0775U);
}

TEST_F(ConfigFileTest, TheDefaultFileIsValidAndEndsWithoutALineBreak) {
    EXPECT_TRUE(isValid(defaultFile()));
    EXPECT_TRUE(defaultFile().endsWith("&PID=0012"));
}

TEST_F(ConfigFileTest, AFileThatCannotBeWrittenReceivesNothing) {
    ASSERT_TRUE(QDir().mkpath(file() + "/in the way"));
    createConfigFile(file().toUtf8().data());
    EXPECT_TRUE(QFileInfo(file()).isDir());
    EXPECT_EQ(QDir(path("bin/config")).entryList(QDir::Files), QStringList());
}

TEST_F(ConfigFileTest, AMissingFileIsLoggedWithItsPath) {
    const LogCapture log;
    VEXAConfig cfg{};
    config_from_file(&cfg);
    const std::string where = path("bin/config//VEXA_init.ini").toStdString();
    const Lines lines = log.lines();
    ASSERT_GT(lines.size(), 6U);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 8),
              Lines({"VEXALD => config_from_file",
                     "VEXALD    config_from_file _fconfig == NULL pFileName config/VEXA_init.ini "
                     "cwd " +
                         where,
                     "VEXALD => createConfigFile", "VEXALD <= createConfigFile",
                     "VEXALD => checkConfigFile", "VEXALD ", "Number of arguments : 14",
                     "VEXALD <= checkConfigFile"}));
    EXPECT_EQ(lines[8], "VEXALD Config file validity : 1");
    EXPECT_EQ(lines[lines.size() - 2], "VEXALD file " + where);
    EXPECT_EQ(lines.back(), "VEXALD <= config_from_file");
}

// --- Validation

TEST_F(ConfigFileTest, ThirteenKeysAndOneInstructionAreValid) {
    EXPECT_TRUE(isValid(kValid));
}

TEST_F(ConfigFileTest, ThirteenKeysWithoutInstructionsAreNot) {
    EXPECT_FALSE(isValid(QByteArray(kValid).replace("&ExplicativeText=E", "")));
}

TEST_F(ConfigFileTest, AnyMissingKeyMakesTheFileInvalid) {
    for (const QByteArray& line : kValid.split('\n')) {
        EXPECT_FALSE(isValid(QByteArray(kValid).replace(line, ""))) << line.constData();
    }
}

TEST_F(ConfigFileTest, ARepeatedKeyMakesUpForAMissingOne) {
    EXPECT_TRUE(isValid(QByteArray(kValid).replace("&Cancel=C", "&Browse=again")));
}

TEST_F(ConfigFileTest, RepeatedInstructionsCountOnce) {
    EXPECT_FALSE(isValid(QByteArray(kValid).replace("&Cancel=C", "&ExplicativeText=again")));
}

TEST_F(ConfigFileTest, IdentifiersAndCopyrightDoNotCount) {
    EXPECT_FALSE(
        isValid(QByteArray(kValid).replace("&Cancel=C", "&VID=f055\n&PID=0012\n&copyright=c")));
}

TEST_F(ConfigFileTest, AnEmptyValueCounts) {
    EXPECT_TRUE(isValid(QByteArray(kValid).replace("&Cancel=C", "&Cancel=")));
}

TEST_F(ConfigFileTest, AnotherLetterCaseOrABlankDoesNotCount) {
    EXPECT_FALSE(isValid(QByteArray(kValid).replace("&Cancel=", "&cancel=")));
    EXPECT_FALSE(isValid(QByteArray(kValid).replace("&Cancel=", "&Cancel =")));
    EXPECT_FALSE(isValid(QByteArray(kValid).replace("&Cancel=", " &Cancel=")));
}

TEST_F(ConfigFileTest, AFileThatIsNotThereIsInvalid) {
    EXPECT_FALSE(checkConfigFile(path("nowhere").toUtf8().data()));
}

TEST_F(ConfigFileTest, AFolderIsInvalid) {
    EXPECT_FALSE(checkConfigFile(path("bin").toUtf8().data()));
}

TEST_F(ConfigFileTest, TheNumberOfSettingsIsLogged) {
    const LogCapture log;
    (void)isValid("&Cancel=a\n&Cancel=b\n#&Browse=c\n&ExplicativeText=d\n&ExplicativeText=e\n");
    EXPECT_EQ(log.lines(), Lines({"VEXALD => checkConfigFile", "VEXALD ", "Number of arguments : 3",
                                  "VEXALD <= checkConfigFile"}));
}

TEST_F(ConfigFileTest, AnInvalidFileIsReplacedOnTheCommandLineWithoutAsking) {
    for (const QByteArray& content :
         {QByteArray(), QByteArray("no settings\n"), QByteArray(5000000, '&'),
          QByteArray(300000, '\0'), QByteArray("\xFF\xFE&\0V\0I\0D", 10),
          QByteArray(kValid).replace('\n', ' ')}) {
        writeConfigFile(content);
        VEXAConfig cfg{};
        config_from_file(&cfg);
        EXPECT_EQ(readFile(file()), defaultFile());
        EXPECT_STREQ(cfg.Button_load, "Charger");
    }
}

TEST_F(ConfigFileTest, AFolderInThePlaceOfTheFileLeavesTheRecordAsItIs) {
    ASSERT_TRUE(QDir().mkpath(file()));
    VEXAConfig cfg{};
    storeText(cfg.Browse, "as it was");
    config_from_file(&cfg);
    EXPECT_STREQ(cfg.Browse, "as it was");
    EXPECT_TRUE(cfg.VID.empty());
}

TEST_F(ConfigFileTest, AFileThatCannotBeOpenedLeavesTheRecordAsItIs) {
    // A link to nowhere can neither be read nor replaced.
    ASSERT_TRUE(QDir().mkpath(path("bin/config")));
    ASSERT_TRUE(QFile::link(path("no/such/file"), file()));
    const LogCapture log;
    VEXAConfig cfg{};
    cfg.VID = {"kept"};
    config_from_file(&cfg);
    EXPECT_EQ(cfg.VID, Lines({"kept"}));
    EXPECT_EQ(log.count("VEXALD => createConfigFile"), 3U);
    EXPECT_EQ(log.count("VEXALD Config file validity : 0"), 1U);
}

// --- Reading

TEST_F(ConfigFileTest, OnlyLinesThatBeginWithAnAmpersandAreSettings) {
    writeConfigFile("#&Browse=comment\n &Browse=blank first\nBrowse=no sign\n" + kValid);
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_STREQ(cfg.Browse, "B");
}

TEST_F(ConfigFileTest, LinesMayEndWithCarriageReturnAndLineFeed) {
    writeConfigFile(QByteArray(kValid).replace("\n", "\r\n") + "\r\n&VID=f055\r\n&PID=0012");
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_STREQ(cfg.Browse, "B");
    EXPECT_STREQ(cfg.Close_application, "X");
    EXPECT_EQ(cfg.VID, Lines({"f055"}));
}

TEST_F(ConfigFileTest, BlanksBelongToTheValue) {
    writeConfigFile(QByteArray(kValid).replace("&Browse=B", "&Browse= B "));
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_STREQ(cfg.Browse, " B ");
}

TEST_F(ConfigFileTest, ALastLineWithALineBreakIsAppliedTwice) {
    writeConfigFile(kValid + "\n&VID=f055\n&PID=0012\n");
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_EQ(cfg.VID, Lines({"f055"}));
    EXPECT_EQ(cfg.PID, Lines({"0012", "0012"}));
}

TEST_F(ConfigFileTest, ALastLineWithoutALineBreakIsAppliedOnce) {
    writeConfigFile(kValid + "\n&VID=f055\n&PID=0012");
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_EQ(cfg.PID, Lines({"0012"}));
}

TEST_F(ConfigFileTest, ALongLineIsTakenInPiecesOf127) {
    // "&Browse=" and 119 characters fill the first piece; the second is no setting, the third is.
    const QByteArray line = "&Browse=" + QByteArray(119, 'a') + QByteArray(127, 'b') + "&Cancel=c";
    writeConfigFile(
        QByteArray(kValid).replace("&Browse=B", line).replace("&Cancel=C", "&Cancel=first") + "\n" +
        line);
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_EQ(std::string(cfg.Browse), std::string(119, 'a'));
    EXPECT_STREQ(cfg.Cancel, "c");
}

TEST_F(ConfigFileTest, TheListsAreEmptiedAndTheTextsKept) {
    writeConfigFile(kValid);
    VEXAConfig cfg{};
    cfg.VID = {"old"};
    cfg.PID = {"old"};
    cfg.ExplicativeText = {"old"};
    storeText(cfg.copyright, "kept");
    config_from_file(&cfg);
    EXPECT_TRUE(cfg.VID.empty());
    EXPECT_TRUE(cfg.PID.empty());
    EXPECT_EQ(cfg.ExplicativeText, Lines({"E"}));
    EXPECT_STREQ(cfg.copyright, "kept");
}

TEST_F(ConfigFileTest, TheLogOpensAtLogPathWhenLogOptionStandsBeforeIt) {
    const QByteArray folder = path("log").toUtf8();
    writeConfigFile(QByteArray(kValid)
                        .replace("&LogOption=0", "&LogOption=1")
                        .replace("&LogPath=.", "&LogPath=" + folder));
    VEXAConfig cfg{};
    config_from_file(&cfg);
    VEXA_logstop();
    const QStringList lines = logLines(path("log/logVEXA.txt"));
    EXPECT_EQ(lines.mid(0, 6),
              QStringList(
                  {"VEXALD parse_variable : g_logfileStream = " + path("log/logVEXA.txt"),
                   "VEXALD parse_variable : logPath = " + path("log") + " (" + path("log") + ")",
                   "VEXALD <= parse_variable", "VEXALD => parse_variable", "VEXALD Valid parameter",
                   "VEXALD parse_variable : RecentPath = /home/x (/home/x)"}));
}

TEST_F(ConfigFileTest, ALogOptionAfterLogPathLeavesTheLogClosed) {
    const QByteArray folder = path("log").toUtf8();
    writeConfigFile(QByteArray(kValid).replace("&LogOption=0\n&LogPath=.",
                                               "&LogPath=" + folder + "\n&LogOption=1"));
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_EQ(g_logfileStream, nullptr);
    EXPECT_FALSE(QFile::exists(path("log")));
}

// --- One line

TEST_F(ConfigFileTest, EachKeyFillsItsFieldAndIsLogged) {
    const struct {
        const char* key;
        char (VEXAConfig::*field)[kConfigTextSize];
        const char* logName;
    } keys[] = {
        {"RecentPath", &VEXAConfig::RecentPath, "RecentPath"},
        {"ApplicationName", &VEXAConfig::ApplicationName, "ApplicationName"},
        {"Database_file", &VEXAConfig::Database_file, "Database_file"},
        {"Browse", &VEXAConfig::Browse, "Browse"},
        {"Device_list", &VEXAConfig::Device_list, "Device_list"},
        {"Button_load", &VEXAConfig::Button_load, "Load"},
        {"PAD_number", &VEXAConfig::PAD_number, "PAD_number"},
        {"Loading_progress", &VEXAConfig::Loading_progress, "Loading_progress"},
        {"Cancel", &VEXAConfig::Cancel, "Cancel"},
        {"Renew_devices", &VEXAConfig::Renew_devices, "Renew_devices"},
        {"Close_application", &VEXAConfig::Close_application, "Close_application"},
        {"LogOption", &VEXAConfig::LogOption, "logOption"},
        {"LogPath", &VEXAConfig::LogPath, "logPath"},
        {"copyright", &VEXAConfig::copyright, "copyright"},
    };
    for (const auto& [key, field, logName] : keys) {
        const LogCapture log;
        const VEXAConfig cfg = afterLine(("&" + std::string(key) + "=é value").c_str());
        EXPECT_STREQ(cfg.*field, "é value") << key;
        EXPECT_EQ(log.lines(),
                  Lines({"VEXALD => parse_variable", "VEXALD Valid parameter",
                         "VEXALD parse_variable : " + std::string(logName) + " = é value (é value)",
                         "VEXALD <= parse_variable"}))
            << key;
    }
}

TEST_F(ConfigFileTest, RepeatableKeysAppendAndAreLogged) {
    const struct {
        const char* key;
        Lines VEXAConfig::*list;
    } keys[] = {{"ExplicativeText", &VEXAConfig::ExplicativeText},
                {"VID", &VEXAConfig::VID},
                {"PID", &VEXAConfig::PID}};
    for (const auto& [key, list] : keys) {
        const LogCapture log;
        VEXAConfig cfg{};
        for (const char* value : {"a", "b"}) {
            std::string line = "&" + std::string(key) + "=" + value;
            parse_variable(line.data(), &cfg);
        }
        EXPECT_EQ(cfg.*list, Lines({"a", "b"})) << key;
        EXPECT_TRUE(log.contains("VEXALD parse_variable : " + std::string(key) + " = b (b)"));
    }
}

TEST_F(ConfigFileTest, ALaterLineOverwritesAnEarlierOne) {
    VEXAConfig cfg{};
    char first[] = "&Browse=a longer text";
    char second[] = "&Browse=b";
    parse_variable(first, &cfg);
    parse_variable(second, &cfg);
    EXPECT_STREQ(cfg.Browse, "b");
}

TEST_F(ConfigFileTest, AnEmptyValueChangesNothing) {
    const LogCapture log;
    VEXAConfig cfg{};
    storeText(cfg.Cancel, "kept");
    char line[] = "&Cancel=";
    parse_variable(line, &cfg);
    EXPECT_STREQ(cfg.Cancel, "kept");
    EXPECT_EQ(log.lines(),
              Lines({"VEXALD => parse_variable",
                     "VEXALD parse_variable : Tag empty : Cancel=", "VEXALD <= parse_variable"}));
}

TEST_F(ConfigFileTest, ALineWithoutAnEqualsSignChangesNothing) {
    const LogCapture log;
    const VEXAConfig cfg = afterLine("&Cancel");
    EXPECT_STREQ(cfg.Cancel, "");
    EXPECT_TRUE(log.contains("VEXALD parse_variable : Tag empty : Cancel"));
}

TEST_F(ConfigFileTest, AnAmpersandAloneChangesNothing) {
    const LogCapture log;
    (void)afterLine("&");
    EXPECT_TRUE(log.contains("VEXALD parse_variable : Tag empty : "));
}

TEST_F(ConfigFileTest, TheValueIsAllThatFollowsTheFirstEqualsSign) {
    EXPECT_STREQ(afterLine("&Browse=a=b=c").Browse, "a=b=c");
    EXPECT_STREQ(afterLine("&Browse==").Browse, "=");
}

TEST_F(ConfigFileTest, AnAbbreviationMeansTheFirstKeyThatItBegins) {
    const VEXAConfig log = afterLine("&Log=1");
    EXPECT_STREQ(log.LogOption, "1");
    EXPECT_STREQ(log.LogPath, "");
    EXPECT_STREQ(afterLine("&C=x").Cancel, "x");
    EXPECT_STREQ(afterLine("&D=x").Database_file, "x");
    EXPECT_STREQ(afterLine("&P=x").PAD_number, "x");
    EXPECT_STREQ(afterLine("&R=x").RecentPath, "x");
    EXPECT_STREQ(afterLine("&Re=x").RecentPath, "x");
    EXPECT_STREQ(afterLine("&Ren=x").Renew_devices, "x");
    EXPECT_STREQ(afterLine("&B=x").Browse, "x");
    EXPECT_STREQ(afterLine("&Bu=x").Button_load, "x");
    EXPECT_STREQ(afterLine("&c=x").copyright, "x");
    EXPECT_EQ(afterLine("&E=x").ExplicativeText, Lines({"x"}));
    EXPECT_EQ(afterLine("&V=x").VID, Lines({"x"}));
}

TEST_F(ConfigFileTest, AnEmptyKeyMeansTheRecentPath) {
    EXPECT_STREQ(afterLine("&=x").RecentPath, "x");
}

TEST_F(ConfigFileTest, AKeyLongerThanEveryNameIsIgnored) {
    const LogCapture log;
    const VEXAConfig cfg = afterLine("&Close_application_now=x");
    EXPECT_STREQ(cfg.Close_application, "");
    EXPECT_EQ(log.lines(), Lines({"VEXALD => parse_variable", "VEXALD Valid parameter",
                                  "VEXALD <= parse_variable"}));
}

TEST_F(ConfigFileTest, AnUnknownOrMisspeltKeyIsIgnored) {
    const VEXAConfig cfg = afterLine("&browse=x");
    EXPECT_STREQ(cfg.Browse, "");
    EXPECT_STREQ(cfg.RecentPath, "");
}

TEST_F(ConfigFileTest, TheRecentPathIsAlsoTheOneOfTheFileDialog) {
    (void)afterLine("&RecentPath=/home/é");
    EXPECT_EQ(PreviousdbName, QString::fromUtf8("/home/é"));
}

TEST_F(ConfigFileTest, AValueBeyondTheFieldIsCut) {
    const VEXAConfig cfg = afterLine(("&Browse=" + std::string(2000, 'x')).c_str());
    EXPECT_EQ(std::string(cfg.Browse), std::string(255, 'x'));
}

// --- Update of the recent folder

TEST_F(ConfigFileTest, TheRecentPathIsReplacedAndTheFileEndsWithALineFeed) {
    writeConfigFile("#one\r\n&RecentPath=/old\n\n&Browse=B");
    writeConfig("/new");
    EXPECT_EQ(readFile(file()), "#one\r\n&RecentPath=/new\n\n&Browse=B\n");
}

TEST_F(ConfigFileTest, AFinalLineFeedIsNotDoubled) {
    writeConfigFile("&RecentPath=/old\n");
    writeConfig("/new");
    writeConfig("/newer");
    EXPECT_EQ(readFile(file()), "&RecentPath=/newer\n");
}

TEST_F(ConfigFileTest, BothRecentPathLinesAreReplaced) {
    writeConfigFile("&RecentPath=a\n&RecentPath=b\r\n#&RecentPath=c\n");
    writeConfig("/new");
    EXPECT_EQ(readFile(file()), "&RecentPath=/new\n&RecentPath=/new\n#&RecentPath=c\n");
}

TEST_F(ConfigFileTest, AFileWithoutARecentPathOnlyGainsTheLineFeed) {
    writeConfigFile("&Browse=B");
    writeConfig("/new");
    EXPECT_EQ(readFile(file()), "&Browse=B\n");
}

TEST_F(ConfigFileTest, ANonAsciiPathIsWrittenAsItsUtf8) {
    writeConfigFile("&RecentPath=\n");
    writeConfig("/données/é");
    EXPECT_EQ(readFile(file()), "&RecentPath=/données/é\n");
}

TEST_F(ConfigFileTest, AfterTheUpdateTheDefaultFileHasAThirdProductIdAndStillTwoPairs) {
    VEXAConfig cfg{};
    config_from_file(&cfg);
    writeConfig("/new");
    config_from_file(&cfg);
    EXPECT_EQ(cfg.PID, Lines({"0012", "0012", "0012"}));
    EXPECT_EQ(cfg.VID.size(), 2U);
    EXPECT_EQ(supportedDeviceCount(cfg), 2U);
    EXPECT_STREQ(cfg.RecentPath, "/new");
}

TEST_F(ConfigFileTest, AMissingFileIsLeftEmptyByTheUpdate) {
    ASSERT_TRUE(QDir().mkpath(path("bin/config")));
    writeConfig("/new");
    EXPECT_TRUE(QFile::exists(file()));
    EXPECT_EQ(readFile(file()), "");
}

TEST_F(ConfigFileTest, AnUpdateOnAFullDiskLeavesTheFileAsItWas) {
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

TEST_F(ConfigFileTest, AnUnknownExecutableMeansTheCurrentFolder) {
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

TEST_F(ConfigFileTest, AnInstalledProgramKeepsItsSettingsInTheUsersFolder) {
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

TEST_F(ConfigFileTest, AReadOnlyFileBesideTheProgramStartsTheUsersCopy) {
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

TEST_F(ConfigFileTest, TheUsersCopyIsNotStartedAgain) {
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

TEST_F(ConfigFileTest, WithoutAHomeTheFileBesideTheProgramIsReadAsItIs) {
    writeConfigFile(kValid);
    (void)chmod(file().toUtf8().constData(), 0444);
    qunsetenv("HOME");
    EXPECT_TRUE(asOrdinaryUser([] {
        VEXAConfig cfg{};
        config_from_file(&cfg);
        return std::string(cfg.Button_load) == "Go";
    }));
}

} // namespace

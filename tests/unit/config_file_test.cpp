// Creation, validation and reading of VEXA_init.ini.

#include "tests/unit/config_file_fixture.h"

namespace {

// --- Creation

TEST_F(ConfigFileTest, AMissingFileIsCreatedWithTheFrenchDefaultsAndRead) {
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_EQ(readFile(file()), defaultConfig());
    EXPECT_STREQ(cfg.ApplicationName, "VEXA Chargeur");
    EXPECT_STREQ(cfg.PAD_number, "Numéro de PAD");
    EXPECT_STREQ(cfg.LogOption, "0");
    EXPECT_STREQ(cfg.LogPath, ".");
    EXPECT_STREQ(cfg.RecentPath, "");
    EXPECT_STREQ(cfg.copyright, "");
    EXPECT_EQ(cfg.VID, Lines({VEXA_VENDOR_ID, VEXA_VENDOR_ID}));
    EXPECT_EQ(cfg.PID, Lines({"0012", "0012"}));
    EXPECT_EQ(cfg.ExplicativeText.size(), 6U);
    EXPECT_EQ(cfg.ExplicativeText[1], "[TAB]");
}

TEST_F(ConfigFileTest, TheFolderIsMadeWithTheRightsThatTheMaskLeaves) {
    const mode_t before = umask(0);
    VEXAConfig cfg{};
    config_from_file(&cfg);
    (void)umask(before);
    struct stat status {};
    ASSERT_EQ(stat(path("bin/config").toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0775U);
}

TEST_F(ConfigFileTest, TheDefaultFileIsValid) {
    EXPECT_TRUE(isValid(defaultConfig()));
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
        EXPECT_EQ(readFile(file()), defaultConfig());
        EXPECT_STREQ(cfg.Button_load, "Charger");
    }
}

TEST_F(ConfigFileTest, AFolderInThePlaceOfTheFileOpensAndHoldsNothing) {
    ASSERT_TRUE(QDir().mkpath(file()));
    const LogCapture log;
    VEXAConfig cfg{};
    storeText(cfg.Browse, "as it was");
    cfg.VID = {"of an earlier reading"};
    config_from_file(&cfg);
    EXPECT_STREQ(cfg.Browse, "as it was");
    EXPECT_TRUE(cfg.VID.empty());
    EXPECT_EQ(log.count("VEXALD => createConfigFile"), 1U);
    EXPECT_EQ(log.lines()[log.lines().size() - 2],
              "VEXALD file " + path("bin/config//VEXA_init.ini").toStdString());
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

TEST_F(ConfigFileTest, ALineIsCutAtItsFirstCarriageReturn) {
    writeConfigFile(QByteArray(kValid).replace("&Browse=B", "&Browse=a\rb"));
    VEXAConfig cfg{};
    config_from_file(&cfg);
    EXPECT_STREQ(cfg.Browse, "a");
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

} // namespace

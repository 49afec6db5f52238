// One line of VEXA_init.ini.

#include "tests/unit/config_file_fixture.h"

namespace {

using ConfigLineTest = ConfigFileTest;

VEXAConfig afterLine(const char* line) {
    VEXAConfig cfg{};
    std::string text = line;
    parse_variable(text.data(), &cfg);
    return cfg;
}

TEST_F(ConfigLineTest, EachKeyFillsItsFieldAndIsLogged) {
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

TEST_F(ConfigLineTest, RepeatableKeysAppendAndAreLogged) {
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

TEST_F(ConfigLineTest, ALaterLineOverwritesAnEarlierOne) {
    VEXAConfig cfg{};
    char first[] = "&Browse=a longer text";
    char second[] = "&Browse=b";
    parse_variable(first, &cfg);
    parse_variable(second, &cfg);
    EXPECT_STREQ(cfg.Browse, "b");
}

TEST_F(ConfigLineTest, AnEmptyValueChangesNothing) {
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

TEST_F(ConfigLineTest, ALineWithoutAnEqualsSignChangesNothing) {
    const LogCapture log;
    const VEXAConfig cfg = afterLine("&Cancel");
    EXPECT_STREQ(cfg.Cancel, "");
    EXPECT_TRUE(log.contains("VEXALD parse_variable : Tag empty : Cancel"));
}

TEST_F(ConfigLineTest, AnAmpersandAloneChangesNothing) {
    const LogCapture log;
    (void)afterLine("&");
    EXPECT_TRUE(log.contains("VEXALD parse_variable : Tag empty : "));
}

TEST_F(ConfigLineTest, TheValueIsAllThatFollowsTheFirstEqualsSign) {
    EXPECT_STREQ(afterLine("&Browse=a=b=c").Browse, "a=b=c");
    EXPECT_STREQ(afterLine("&Browse==").Browse, "=");
}

TEST_F(ConfigLineTest, AnAbbreviationMeansTheFirstKeyThatItBegins) {
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

TEST_F(ConfigLineTest, AnEmptyKeyMeansTheRecentPath) {
    EXPECT_STREQ(afterLine("&=x").RecentPath, "x");
}

TEST_F(ConfigLineTest, AKeyLongerThanEveryNameIsIgnored) {
    const LogCapture log;
    const VEXAConfig cfg = afterLine("&Close_application_now=x");
    EXPECT_STREQ(cfg.Close_application, "");
    EXPECT_EQ(log.lines(), Lines({"VEXALD => parse_variable", "VEXALD Valid parameter",
                                  "VEXALD <= parse_variable"}));
}

TEST_F(ConfigLineTest, AnUnknownOrMisspeltKeyIsIgnored) {
    const VEXAConfig cfg = afterLine("&browse=x");
    EXPECT_STREQ(cfg.Browse, "");
    EXPECT_STREQ(cfg.RecentPath, "");
}

TEST_F(ConfigLineTest, TheRecentPathIsAlsoTheOneOfTheFileDialog) {
    (void)afterLine("&RecentPath=/home/é");
    EXPECT_EQ(PreviousdbName, QString::fromUtf8("/home/é"));
}

TEST_F(ConfigLineTest, AValueBeyondTheFieldIsCut) {
    const VEXAConfig cfg = afterLine(("&Browse=" + std::string(2000, 'x')).c_str());
    EXPECT_EQ(std::string(cfg.Browse), std::string(255, 'x'));
}

} // namespace

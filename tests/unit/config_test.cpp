#include "configuration/config.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

TEST(ConfigTest, TheDefaultsAreTheEnglishTexts) {
    const VEXAConfig cfg = getDefaultConfig();
    EXPECT_STREQ(cfg.RecentPath, "C:\\");
    EXPECT_STREQ(cfg.ApplicationName, "VEXA");
    EXPECT_EQ(cfg.ExplicativeText,
              Lines({"Welcome to VEXA database loader !", "[TAB]",
                     "1. Click 'Browse' to choose a database file (.db)",
                     "2. Select a device in 'Device list' (Click on 'Refresh' if neccessary)",
                     "3. Select a PAD number", "4. Click 'Load'"}));
    EXPECT_STREQ(cfg.Database_file, "Database file");
    EXPECT_STREQ(cfg.Browse, "Browse");
    EXPECT_STREQ(cfg.Device_list, "Device list");
    EXPECT_STREQ(cfg.Button_load, "Load");
    EXPECT_STREQ(cfg.PAD_number, "2");
    EXPECT_STREQ(cfg.Loading_progress, "Loading progress");
    EXPECT_STREQ(cfg.Cancel, "Cancel");
    EXPECT_STREQ(cfg.Renew_devices, "Refresh");
    EXPECT_STREQ(cfg.Close_application, "Close");
    EXPECT_STREQ(cfg.LogPath, "");
    EXPECT_STREQ(cfg.LogOption, "");
    EXPECT_TRUE(cfg.VID.empty());
    EXPECT_TRUE(cfg.PID.empty());
}

TEST(ConfigTest, TheRecordIsLoggedInItsOrder) {
    VEXAConfig cfg = getDefaultConfig();
    cfg.ExplicativeText = {"one", "two"};
    cfg.VID = {"f055", "0403", "1a86"};
    cfg.PID = {"0012", "6001"};
    storeText(cfg.LogOption, "1");
    storeText(cfg.LogPath, "/var/log");
    storeText(cfg.copyright, "not shown");
    const LogCapture log;
    printConfig(&cfg);
    EXPECT_EQ(log.lines(), Lines({
                               "VEXALD => printConfig",
                               "VEXALD Information of the config struct: ",
                               "VEXALD RecentPath=C:\\",
                               "VEXALD LogPath=/var/log",
                               "VEXALD ApplicationName=VEXA",
                               "VEXALD ExplicativeText=one",
                               "VEXALD ExplicativeText=two",
                               "VEXALD Database_file=Database file",
                               "VEXALD Browse=Browse",
                               "VEXALD Device_list=Device list",
                               "VEXALD Button_load=Load",
                               "VEXALD PAD_number=2",
                               "VEXALD Loading_progress=Loading progress",
                               "VEXALD Cancel=Cancel",
                               "VEXALD Renew_devices=Refresh",
                               "VEXALD Close_application=Close",
                               "VEXALD 2 supported device(s)",
                               "VEXALD VID=f055 - PID=0012",
                               "VEXALD VID=0403 - PID=6001",
                               "VEXALD <= printConfig",
                           }));
}

TEST(ConfigTest, WithoutInstructionsNoLineOfThemIsLogged) {
    VEXAConfig cfg{};
    const LogCapture log;
    printConfig(&cfg);
    EXPECT_EQ(log.count("VEXALD ExplicativeText="), 0U);
    EXPECT_EQ(log.count("VEXALD 0 supported device(s)"), 1U);
}

TEST(ConfigTest, ATextThatIsTooLongIsCutAndTerminated) {
    VEXAConfig cfg{};
    storeText(cfg.Browse, std::string(1000, 'x').c_str());
    EXPECT_EQ(std::string(cfg.Browse), std::string(255, 'x'));
}

} // namespace

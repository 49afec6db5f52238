// Where the executable and the settings lie on macOS.

#include "app/display.h"
#include "configuration/config_location.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <QDir>

#include <cstring>
#include <mach-o/dyld.h>

namespace {

std::string systemsPath;

} // namespace

int _NSGetExecutablePath(char* buf, std::uint32_t* bufsize) {
    const auto needed = static_cast<std::uint32_t>(systemsPath.size() + 1);
    const bool fits = needed <= *bufsize;
    *bufsize = fits ? *bufsize : needed;
    if (fits) {
        std::memcpy(buf, systemsPath.c_str(), needed);
    }
    return fits ? 0 : -1;
}

namespace {

TEST(MacosLocationTest, ThePathOfTheExecutableIsTheSystems) {
    systemsPath = "/Applications/VEXACharger.app/Contents/MacOS/VEXACharger";
    char path[256] = "before";
    EXPECT_TRUE(executablePath(path, 255));
    EXPECT_EQ(path, systemsPath);
}

TEST(MacosLocationTest, APathOf254BytesFits) {
    systemsPath = "/" + std::string(253, 'p');
    char path[256] = "";
    EXPECT_TRUE(executablePath(path, 255));
    EXPECT_EQ(path, systemsPath);
}

TEST(MacosLocationTest, ALongerPathFailsAndLeavesNothing) {
    systemsPath = "/" + std::string(254, 'p');
    char path[256] = "before";
    EXPECT_FALSE(executablePath(path, 255));
    EXPECT_STREQ(path, "");
}

TEST(MacosLocationTest, SettingsLieBesideAnExecutableWhoseFolderCanBeWritten) {
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkpath("MacOS") && QDir(folder.path()).mkpath("home"));
    // The system's answer need not be tidy.
    systemsPath = folder.path().toStdString() + "/home/../MacOS/./VEXACharger";
    qputenv("HOME", (folder.path() + "/home").toUtf8());
    EXPECT_EQ(configParentFolder("test"), folder.path().toStdString() + "/MacOS");
}

TEST(MacosLocationTest, ElseTheyLieInTheUsersLibrary) {
    const QTemporaryDir home;
    systemsPath = "/nowhere/VEXACharger.app/Contents/MacOS/VEXACharger";
    qputenv("HOME", home.path().toUtf8());
    const QString library = home.path() + "/Library/Application Support/VEXACharger";
    EXPECT_EQ(configParentFolder("test"), library.toStdString());
    EXPECT_TRUE(QFileInfo(library + "/config").isDir());
}

TEST(MacosLocationTest, TheCommandLineNeedsNoScreen) {
    EXPECT_STREQ(kCommandLinePlatform, "minimal");
}

} // namespace

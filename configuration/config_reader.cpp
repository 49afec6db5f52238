#include "configuration/config_reader.h"

#include "app/log.h"
#include "app/run_mode.h"
#include "configuration/config_location.h"
#include "configuration/config_writer.h"

#include <QMessageBox>
#include <QObject>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace {

constexpr std::size_t kLineSize = 128;
constexpr int kNeededSettings = 13;

struct FileCloser {
    void operator()(std::FILE* file) const { (void)std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

enum class Effect { text, recentPath, list, logPath };

/// What a key fills, and the name that its log line carries.
struct Key {
    const char* name;
    const char* logName;
    Effect effect;
    char (VEXAConfig::*text)[kConfigTextSize];
    std::vector<std::string> VEXAConfig::*list;
};

constexpr Key textKey(const char* name, char (VEXAConfig::*field)[kConfigTextSize],
                      const char* logName = nullptr, Effect effect = Effect::text) {
    return {name, logName == nullptr ? name : logName, effect, field, nullptr};
}

constexpr Key listKey(const char* name, std::vector<std::string> VEXAConfig::*list) {
    return {name, name, Effect::list, nullptr, list};
}

// The order decides which key an abbreviation means. Some log names differ from their keys;
// support staff search for them as they are.
constexpr Key kKeys[] = {
    textKey("RecentPath", &VEXAConfig::RecentPath, nullptr, Effect::recentPath),
    textKey("ApplicationName", &VEXAConfig::ApplicationName),
    listKey("ExplicativeText", &VEXAConfig::ExplicativeText),
    textKey("Database_file", &VEXAConfig::Database_file),
    textKey("Browse", &VEXAConfig::Browse),
    textKey("Device_list", &VEXAConfig::Device_list),
    textKey("Button_load", &VEXAConfig::Button_load, "Load"),
    textKey("PAD_number", &VEXAConfig::PAD_number),
    textKey("Loading_progress", &VEXAConfig::Loading_progress),
    textKey("Cancel", &VEXAConfig::Cancel),
    textKey("Renew_devices", &VEXAConfig::Renew_devices),
    textKey("Close_application", &VEXAConfig::Close_application),
    listKey("VID", &VEXAConfig::VID),
    listKey("PID", &VEXAConfig::PID),
    textKey("LogOption", &VEXAConfig::LogOption, "logOption"),
    textKey("LogPath", &VEXAConfig::LogPath, "logPath", Effect::logPath),
    textKey("copyright", &VEXAConfig::copyright),
};

// Lines that make a file valid, each time they stand in it. VID, PID and copyright do not count.
constexpr const char* kCountedPrefixes[] = {
    "&LogOption=",         "&LogPath=", "&RecentPath=",    "&ApplicationName=",
    "&Database_file=",     "&Browse=",  "&Device_list=",   "&Button_load=",
    "&PAD_number=",        "&Cancel=",  "&Renew_devices=", "&Loading_progress=",
    "&Close_application=",
};
constexpr char kInstructionsPrefix[] = "&ExplicativeText=";

bool startsWith(const std::string& text, const char* prefix) {
    return text.compare(0, std::strlen(prefix), prefix) == 0;
}

bool isCountedSetting(const std::string& line) {
    return std::any_of(std::begin(kCountedPrefixes), std::end(kCountedPrefixes),
                       [&](const char* prefix) { return startsWith(line, prefix); });
}

/// Reads a line, of which only as much is kept as tells a setting from another: a file without
/// line ends may be of any size.
/// \return false at the end of the file, with nothing read
bool readLineStart(std::FILE* file, std::string& line) {
    line.clear();
    int c = std::fgetc(file);
    if (c == EOF) {
        return false;
    }
    for (; c != EOF && c != '\n'; c = std::fgetc(file)) {
        if (line.size() < kLineSize) {
            line.push_back(static_cast<char>(c));
        }
    }
    return true;
}

const Key* findKey(const char* name, std::size_t length) {
    for (const Key& key : kKeys) {
        if (std::strncmp(key.name, name, length) == 0) {
            return &key;
        }
    }
    return nullptr;
}

void storeValue(const Key& key, const char* value, VEXAConfig* cfg) {
    if (key.effect == Effect::list) {
        (cfg->*key.list).emplace_back(value);
        VEXALog(kLogInfo, "parse_variable : %s = %s (%s)", key.logName, value, value);
        return;
    }
    storeText(cfg->*key.text, value);
    if (key.effect == Effect::recentPath) {
        PreviousdbName = QString::fromUtf8(value);
    } else if (key.effect == Effect::logPath) {
        // LogOption must have been read by now: a LogOption line further down comes too late.
        VEXA_logstart(cfg->LogOption, cfg->LogPath);
    }
    VEXALog(kLogInfo, "parse_variable : %s = %s (%s)", key.logName, cfg->*key.text, value);
}

/// Opens a file for reading. A pipe or a device would keep the program waiting; a folder opens and
/// holds no settings.
File openForReading(const char* path) {
    struct stat status {};
    const bool canBeOpened =
        stat(path, &status) == 0 && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
    return File(canBeOpened ? std::fopen(path, "r") : nullptr);
}

void createMissingFile(char* path) {
    VEXALog(kLogError, "config_from_file _fconfig == NULL pFileName %s cwd %s",
            "config/VEXA_init.ini", path);
    createConfigFile(path);
}

void replaceInvalidFile(char* path) {
    if (!g_inCmdMode) {
        QMessageBox message;
        message.setWindowTitle(QObject::tr("VEXA message"));
        message.setText(QObject::tr("Config file not valid. Click OK to launch application"));
        (void)message.exec();
    }
    createConfigFile(path);
}

/// Applies every setting of the file. The end, or an error, is only noticed by a read that fails,
/// and what the read before it left is then applied once more: the last line counts twice in a file
/// that ends with a line break. The default file does not, and existing files rely on it.
void readSettings(std::FILE* file, VEXAConfig* cfg) {
    char line[kLineSize] = "";
    do {
        const char* const read = std::fgets(line, sizeof line, file);
        (void)read; // not looked at: see above
        line[std::strcspn(line, "\r\n")] = '\0';
        if (line[0] == '&') {
            parse_variable(line, cfg);
        }
    } while (std::feof(file) == 0 && std::ferror(file) == 0);
}

} // namespace

void config_from_file(VEXAConfig* cfg) {
    const FunctionTrace trace("config_from_file");
    const std::string folder = configParentFolder("config_from_file") + "/config";
    (void)mkdir(folder.c_str(), kConfigFolderMode);
    std::string path = folder + "//VEXA_init.ini";

    if (!openForReading(path.data())) {
        createMissingFile(path.data());
    }
    const bool valid = checkConfigFile(path.data());
    VEXALog(kLogInfo, "Config file validity : %d", valid ? 1 : 0);
    if (!valid) {
        replaceInvalidFile(path.data());
    }

    const File file = openForReading(path.data());
    if (!file) {
        createMissingFile(path.data()); // for the next start
        return;
    }
    cfg->ExplicativeText.clear();
    cfg->VID.clear();
    cfg->PID.clear();
    readSettings(file.get(), cfg);
    VEXALog(kLogInfo, "file %s", path.c_str());
}

bool checkConfigFile(char* path) {
    const FunctionTrace trace("checkConfigFile");
    const File file = openForReading(path);
    if (!file) {
        return false;
    }
    int settings = 0;
    bool hasInstructions = false;
    std::string line;
    while (readLineStart(file.get(), line)) {
        if (isCountedSetting(line)) {
            ++settings;
        } else if (startsWith(line, kInstructionsPrefix)) {
            hasInstructions = true;
        }
    }
    settings += hasInstructions ? 1 : 0;
    VEXALog(kLogInfo, "\nNumber of arguments : %d", settings);
    return settings > kNeededSettings;
}

void parse_variable(char* line, VEXAConfig* cfg) {
    const FunctionTrace trace("parse_variable");
    const char* name = line + 1;
    const char* equals = std::strchr(name, '=');
    if (equals == nullptr || equals[1] == '\0') {
        VEXALog(kLogInfo, "parse_variable : Tag empty : %s", name);
        return;
    }
    VEXALog(kLogInfo, "Valid parameter");
    const Key* key = findKey(name, static_cast<std::size_t>(equals - name));
    if (key != nullptr) {
        storeValue(*key, equals + 1, cfg);
    }
}

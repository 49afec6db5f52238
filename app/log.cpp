#include "app/log.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <string>
#include <sys/stat.h>

std::int32_t g_logLevel = 0x1F;
char* g_logFileName = nullptr;
std::FILE* g_logfileStream = nullptr;

namespace {

constexpr std::size_t kLineSize = 512;
constexpr long kFullFileSize = 0x100000;
constexpr mode_t kFolderMode = 0775;
constexpr char kDefaultFolder[] = "/Library/Application Support/VEXACharger";
constexpr char kFileName[] = "/logVEXA.txt";
constexpr char kRetiredExtension[] = ".old";

std::mutex logMutex;
char linePrefix[8] = "VEXALD ";
std::int32_t indentation = 0;
char message[kLineSize] = "";
char line[kLineSize] = " ";

void closeFile() {
    if (g_logfileStream != nullptr) {
        (void)std::fclose(g_logfileStream);
        g_logfileStream = nullptr;
    }
}

/// Creates a folder below another one, which must be there: a fresh account has no "Library" yet.
/// \param below begins with a slash
void makeFolders(const std::string& parent, const std::string& below) {
    for (std::size_t end = below.find('/', 1); end != std::string::npos;
         end = below.find('/', end + 1)) {
        (void)mkdir((parent + below.substr(0, end)).c_str(), kFolderMode);
    }
    (void)mkdir((parent + below).c_str(), kFolderMode);
}

/// Opens a file, but no pipe: one that nobody reads would hold up the load.
std::FILE* openLog(const char* name) {
    std::FILE* file = std::fopen(name, "w+");
    struct stat status {};
    if (file != nullptr && (fstat(fileno(file), &status) != 0 || S_ISFIFO(status.st_mode))) {
        (void)std::fclose(file);
        return nullptr;
    }
    return file;
}

const char* levelMarker(int level) {
    if ((level & kLogEntry) != 0) {
        return "=> ";
    }
    if ((level & kLogExit) != 0) {
        return "<= ";
    }
    return (level & kLogInfo) != 0 ? "" : "   ";
}

/// The local time as it opens a line. Formatted once a second: a loaded block alone writes dozens
/// of lines.
const char* timeText() {
    static std::time_t shown = -1;
    static char text[64] = "";
    const std::time_t now = std::time(nullptr);
    if (now != shown) {
        std::tm local{};
        (void)localtime_r(&now, &local);
        // The year has four digits whatever its width here says; readers of the file expect them.
        (void)std::snprintf(text, sizeof text, "%2.2d/%2.2d/%2.2d %2.2dh%2.2dm%2.2ds",
                            local.tm_mday, local.tm_mon + 1, 1900 + local.tm_year, local.tm_hour,
                            local.tm_min, local.tm_sec);
        shown = now;
    }
    return text;
}

void writeLine(int level) {
    // Every line takes two off and an entry line adds two back, so that no blank is ever written:
    // the file is meant to be flush left.
    if (level != 0 && indentation >= 2) {
        indentation -= 2;
    }
    const int length =
        std::snprintf(line, sizeof line, "%s%*s%s%s", linePrefix, static_cast<int>(indentation), "",
                      levelMarker(level), message);
    if (length >= 0) { // A longer line than there is room for is cut.
        (void)std::fprintf(g_logfileStream, "%s - %s\n", timeText(), line);
    }
    if ((level & kLogEntry) != 0) {
        indentation += 2;
    }
}

/// The log file's name with its extension, if it has one, replaced by ".old".
std::string retiredName(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    const std::size_t dot = name.rfind('.');
    const bool inFilePart = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    return name.substr(0, inFilePart && dot > 0 ? dot : name.size()) + kRetiredExtension;
}

void startNewFileWhenFull() {
    if (g_logFileName == nullptr || std::ftell(g_logfileStream) < kFullFileSize) {
        return;
    }
    closeFile();
    const std::string oldName = retiredName(g_logFileName);
    (void)std::remove(oldName.c_str());
    (void)std::rename(g_logFileName, oldName.c_str());
    g_logfileStream = std::fopen(g_logFileName, "w");
}

/// Makes the file of this name the log, in the place of the one that may be open.
void openFile(const std::string& name) {
    const std::lock_guard<std::mutex> lock(logMutex);
    closeFile();
    if (name.size() >= kLogFileNameSize) {
        return;
    }
    std::memcpy(g_logFileName, name.c_str(), name.size() + 1);
    g_logfileStream = openLog(g_logFileName);
}

} // namespace

void VEXA_logstart(const char* logOption, const char* logPath) {
    if (g_logFileName == nullptr) {
        g_logFileName = new char[kLogFileNameSize]();
    }
    if (std::strcmp(logOption, "1") != 0) {
        return;
    }
    const bool inHome = std::strcmp(logPath, ".") == 0;
    const char* home = std::getenv("HOME");
    if (inHome && home == nullptr) {
        return;
    }
    const std::string folder = inHome ? std::string(home) + kDefaultFolder : logPath;
    VEXALog(kLogInfo, "parse_variable : g_logDir = %s", folder.c_str());
    if (inHome) {
        makeFolders(home, kDefaultFolder);
    } else {
        (void)mkdir(folder.c_str(), kFolderMode);
    }
    const std::string name = folder + kFileName;
    openFile(name);
    VEXALog(kLogInfo, "parse_variable : g_logfileStream = %s", name.c_str());
}

void VEXALog(int level, const char* fmt, ...) {
    const std::lock_guard<std::mutex> lock(logMutex);
    if (g_logfileStream == nullptr) {
        return;
    }
    if ((level & g_logLevel) != 0) {
        std::va_list arguments;
        va_start(arguments, fmt);
        (void)std::vsnprintf(message, sizeof message, fmt, arguments);
        va_end(arguments);
        writeLine(level);
    }
    (void)std::fflush(g_logfileStream);
    startNewFileWhenFull();
}

void VEXA_logstop() {
    const std::lock_guard<std::mutex> lock(logMutex);
    closeFile();
}

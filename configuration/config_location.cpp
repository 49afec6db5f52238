#include "configuration/config_location.h"

#include "app/log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdlib>
#include <unistd.h>

namespace {

constexpr std::size_t kPathSize = 255;
constexpr char kConfigFolder[] = "/config";
constexpr char kConfigFile[] = "/config/VEXA_init.ini";

bool allows(const std::string& path, int mode) {
    return access(path.c_str(), mode) == 0;
}

std::string executableFolder(const char* caller) {
    char path[kPathSize + 1] = "";
    if (!executablePath(path, kPathSize)) {
        VEXALog(kLogError, "%s : readlink() failed", caller);
    }
    return QDir(QFileInfo(QString::fromUtf8(path)).path()).absolutePath().toStdString();
}

/// True when the settings beside the executable can be kept up to date.
bool isWritablePlace(const std::string& parent) {
    const std::string folder = parent + kConfigFolder;
    const std::string file = parent + kConfigFile;
    const bool folderIsWritable = !allows(folder, F_OK) || allows(folder, W_OK | X_OK);
    const bool fileIsReadOnly = allows(file, R_OK) && !allows(file, W_OK);
    return allows(parent, W_OK | X_OK) && folderIsWritable && !fileIsReadOnly;
}

void startUserCopy(const std::string& from, const std::string& to) {
    QFile source(QString::fromStdString(from));
    if (!allows(to, F_OK) && source.open(QIODevice::ReadOnly)) {
        (void)replaceFile(to, source.readAll());
    }
}

} // namespace

std::string configParentFolder(const char* caller) {
    const std::string beside = executableFolder(caller);
    const char* home = std::getenv("HOME");
    if (isWritablePlace(beside) || home == nullptr || home[0] != '/') {
        return beside;
    }
    const std::string own = std::string(home) + "/" + kUserSettingsFolder;
    if (!QDir().mkpath(QString::fromStdString(own + kConfigFolder)) ||
        !allows(own + kConfigFolder, W_OK | X_OK)) {
        return beside;
    }
    startUserCopy(beside + kConfigFile, own + kConfigFile);
    return own;
}

bool replaceFile(const std::string& path, const QByteArray& content) {
    QSaveFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    // Only this flush notices a disk that is full; commit would rename what did fit.
    if (file.write(content) != content.size() || !file.flush()) {
        file.cancelWriting();
    }
    return file.commit();
}

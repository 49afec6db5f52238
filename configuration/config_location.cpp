#include "configuration/config_location.h"

#include "app/log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdlib>
#include <sys/stat.h>
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
    const bool fileIsWritable = !allows(file, F_OK) || allows(file, W_OK);
    return allows(parent, W_OK | X_OK) && folderIsWritable && fileIsWritable;
}

/// Copies a file of settings. One that is larger than any of them is left to the defaults.
void startUserCopy(const std::string& from, const std::string& to) {
    constexpr qint64 kLargest = 1048576;
    const QString source = QString::fromStdString(from);
    QFile file(source);
    if (allows(to, F_OK) || !QFileInfo(source).isFile() || file.size() > kLargest ||
        !file.open(QIODevice::ReadOnly)) {
        return;
    }
    const QByteArray content = file.read(kLargest);
    if (file.error() == QFileDevice::NoError) {
        (void)replaceFile(to, content);
    }
}

/// Gives a new file to whom the old one belongs: nobody's settings are taken away by an update.
/// \return false when that is not allowed
bool keepOwner(const std::string& path, const QSaveFile& replacement) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return true; // nobody's yet
    }
    const bool isOurs = status.st_uid == geteuid() && status.st_gid == getegid();
    return isOurs || fchown(replacement.handle(), status.st_uid, status.st_gid) == 0;
}

bool overwrite(const std::string& path, const QByteArray& content) {
    QFile file(QString::fromStdString(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           file.write(content) == content.size();
}

} // namespace

std::string configParentFolder(const char* caller) {
    const std::string beside = executableFolder(caller);
    const char* home = std::getenv("HOME");
    if (isWritablePlace(beside) || home == nullptr || home[0] != '/') {
        return beside;
    }
    const std::string own = std::string(home) + "/" + kUserSettingsFolder;
    (void)QDir().mkpath(QString::fromStdString(own));
    (void)mkdir((own + kConfigFolder).c_str(), kConfigFolderMode);
    if (!allows(own + kConfigFolder, W_OK | X_OK)) {
        return beside;
    }
    startUserCopy(beside + kConfigFile, own + kConfigFile);
    return own;
}

bool replaceFile(const std::string& path, const QByteArray& content) {
    QSaveFile file(QString::fromStdString(path));
    const bool besideIt = file.open(QIODevice::WriteOnly);
    // Only this flush notices a disk that is full; commit would rename what did fit.
    if (besideIt && (file.write(content) != content.size() || !file.flush())) {
        file.cancelWriting();
        return false;
    }
    if (besideIt && keepOwner(path, file) && file.commit()) {
        return true;
    }
    // A file that can be written and not replaced: it belongs to somebody else, its folder is
    // read-only or sticky, or it is mounted by itself.
    file.cancelWriting();
    return overwrite(path, content);
}

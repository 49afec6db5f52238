#include "db/database_file.h"

#include <QDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

bool canBeRead(const std::string& path) {
    if (QString::fromStdString(path).toStdString() != path) {
        return false;
    }
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file == -1) {
        return false;
    }
    struct stat status {};
    const bool known = fstat(file, &status) == 0;
    (void)close(file);
    return known && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

QString absolutePath(const std::string& path) {
    const QString given = QString::fromStdString(path);
    return given.startsWith('/') ? given : QDir::currentPath() + "/" + given;
}

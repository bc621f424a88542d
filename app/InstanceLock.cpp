#include "app/InstanceLock.h"

#include <QByteArray>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;

bool isFolder(const QByteArray& path) {
    struct stat status {};
    return stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// Makes missing parents too; each new folder gets its mode whatever the umask. On failure errno is
/// set.
bool makeFolder(const QByteArray& path) {
    if (isFolder(path)) {
        return true;
    }
    const qsizetype slash = path.lastIndexOf('/');
    if (slash > 0 && !makeFolder(path.first(slash))) {
        return false;
    }
    if (mkdir(path.constData(), folderMode) != 0) {
        return errno == EEXIST && isFolder(path);
    }
    return chmod(path.constData(), folderMode) == 0;
}

} // namespace

InstanceLock::InstanceLock(const QString& home) {
    const QString folder = home + u"/.corvala"_s;
    hasFolder_ = makeFolder(QFile::encodeName(folder));
    if (!hasFolder_) {
        failure_ = systemError(errno, u"The folder \"%1\" could not be made"_s.arg(folder));
        return;
    }
    file_ = folder + u"/worker-control.lock"_s;
    const QByteArray path = QFile::encodeName(file_);
    descriptor_ = open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, fileMode);
    if (descriptor_ < 0) {
        failure_ = systemError(errno, u"The file \"%1\" could not be opened"_s.arg(file_));
    }
}

bool InstanceLock::take() {
    if (descriptor_ < 0) {
        return false;
    }
    if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        failure_ = systemError(errno, u"The file \"%1\" could not be locked"_s.arg(file_));
        return false;
    }
    return true;
}

} // namespace vesk

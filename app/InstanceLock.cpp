#include "app/InstanceLock.h"

#include <QByteArray>
#include <QFile>

#include <cerrno>
#include <cstdlib>
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

/// With what is missing on the way; each new folder gets its mode whatever the umask.
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
    const QByteArray folder = QFile::encodeName(home + u"/.corvala"_s);
    if (!makeFolder(folder)) {
        std::abort();
    }
    const QByteArray file = folder + "/worker-control.lock";
    descriptor_ = open(file.constData(), O_RDWR | O_CREAT | O_CLOEXEC, fileMode);
}

bool InstanceLock::take() const {
    return descriptor_ >= 0 && flock(descriptor_, LOCK_EX | LOCK_NB) == 0;
}

} // namespace vesk

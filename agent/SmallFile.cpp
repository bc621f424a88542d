#include "agent/SmallFile.h"

#include "agent/Descriptor.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr mode_t everybodyReads = 0044;

ServiceError readError(int number, const QString& path) {
    return systemError(number, u"The file \"%1\" could not be read"_s.arg(path));
}

ServiceError writeError(int number, const QString& path) {
    return systemError(number, u"The file \"%1\" could not be written"_s.arg(path));
}

/// 0, or the system's error number.
int writeAll(const Descriptor& file, QByteArrayView bytes) {
    while (!bytes.isEmpty()) {
        const ssize_t count =
            write(file.get(), bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        bytes = bytes.sliced(std::max<ssize_t>(count, 0));
    }
    return fsync(file.get()) == 0 ? 0 : errno;
}

} // namespace

std::variant<SmallFile, ServiceError> readSmallFile(const QString& path) {
    const Descriptor file(
        open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0) {
        return readError(errno, path);
    }
    if (!S_ISREG(status.st_mode)) {
        return readError(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, path);
    }
    QByteArray bytes(smallFileLimit + 1, Qt::Uninitialized);
    qsizetype size = 0;
    while (size < bytes.size()) {
        const ssize_t count =
            read(file.get(), bytes.data() + size, static_cast<std::size_t>(bytes.size() - size));
        if (count == 0) {
            break;
        }
        if (count < 0 && errno != EINTR) {
            return readError(errno, path);
        }
        size += std::max<ssize_t>(count, 0);
    }
    if (size > smallFileLimit) {
        return readError(EFBIG, path);
    }
    bytes.truncate(size);
    const bool isForEverybody = (status.st_mode & everybodyReads) == everybodyReads;
    return SmallFile{bytes, isForEverybody ? Readers::Everybody : Readers::Owner};
}

std::optional<ServiceError> replaceFile(const QString& path, const SmallFile& content) {
    const QFileInfo target(path);
    const QByteArray name = QFile::encodeName(target.fileName());
    const QByteArray temporary =
        '.' + name + '.' + QByteArray::number(QRandomGenerator::system()->generate64(), 16);

    // All through the one open folder: it cannot become another in between.
    const Descriptor folder(
        open(QFile::encodeName(target.path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) {
        return writeError(errno, path);
    }
    const mode_t mode = content.readers == Readers::Everybody ? 0600 | everybodyReads : 0600;
    const Descriptor file(openat(
        folder.get(), temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
        mode));
    if (!file.isOpen()) {
        return writeError(errno, path);
    }
    int error = writeAll(file, content.bytes);
    if (error == 0
        && renameat(folder.get(), temporary.constData(), folder.get(), name.constData()) != 0) {
        error = errno;
    }
    if (error != 0) {
        unlinkat(folder.get(), temporary.constData(), 0);
        return writeError(error, path);
    }
    // The file is in place, and not every file system can be told to remember it now: a failure
    // here is none of the writing's.
    static_cast<void>(fsync(folder.get()));
    return std::nullopt;
}

} // namespace vesk

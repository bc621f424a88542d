#include "agent/systemd/AgentPlaces.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QString folderOf(const QString& path) {
    return path.first(path.lastIndexOf(u'/') + 1);
}

/// The folders to be made must not lead anywhere else than they seem to.
void makeFolder(const QString& folder) {
    QString existing = folder;
    while (!QFileInfo::exists(existing)) {
        existing = folderOf(existing.chopped(1));
    }
    const QStringList missing = folder.sliced(existing.size()).split(u'/');
    const QString home = QDir(QDir::homePath()).canonicalPath();
    const QString place = QDir(existing).canonicalPath();
    if (home != u"/" && (place + u'/').startsWith(home + u'/') && !missing.contains(u".."_s)) {
        QDir().mkpath(folder);
    }
}

/// 0, or the system's error number.
int programError(const QString& path) {
    const QByteArray file = QFile::encodeName(path);
    struct stat status {};
    if (stat(file.constData(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : EACCES;
    }
    return access(file.constData(), X_OK) == 0 ? 0 : errno;
}

int folderError(const QString& path, int mode) {
    return access(QFile::encodeName(path + u'/').constData(), mode) == 0 ? 0 : errno;
}

int logError(const QString& path) {
    const QByteArray file = QFile::encodeName(path);
    struct stat status {};
    if (stat(file.constData(), &status) != 0) {
        return errno == ENOENT ? folderError(folderOf(path), W_OK | X_OK) : errno;
    }
    if (S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    return access(file.constData(), W_OK) == 0 ? 0 : errno;
}

} // namespace

void makeLogFolders(const LaunchAgent& agent) {
    for (const auto& log : {agent.standardOutPath, agent.standardErrorPath}) {
        if (log) {
            makeFolder(folderOf(*log));
        }
    }
}

std::optional<ServiceError> obstacle(const LaunchAgent& agent) {
    if (const int error = programError(agent.program); error != 0) {
        return systemError(error, u"The program \"%1\" cannot be run"_s.arg(agent.program));
    }
    const auto& folder = agent.workingDirectory;
    if (const int error = folder ? folderError(*folder, X_OK) : 0; error != 0) {
        return systemError(error, u"The folder \"%1\" cannot be entered"_s.arg(*folder));
    }
    for (const auto& log : {agent.standardOutPath, agent.standardErrorPath}) {
        if (const int error = log ? logError(*log) : 0; error != 0) {
            return systemError(error, u"The log file \"%1\" cannot be written"_s.arg(*log));
        }
    }
    return std::nullopt;
}

} // namespace vesk

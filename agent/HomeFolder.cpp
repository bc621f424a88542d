#include "agent/HomeFolder.h"

#include <QFile>

#include <pwd.h>
#include <unistd.h>

namespace vesk {

namespace {

QByteArray homePath() {
    if (QByteArray home = qgetenv("HOME"); !home.isEmpty()) {
        return home;
    }
    const passwd* user = getpwuid(getuid());
    return user == nullptr ? QByteArray() : QByteArray(user->pw_dir);
}

bool survivesDecoding(const QByteArray& path) {
    return QFile::encodeName(QFile::decodeName(path)) == path;
}

} // namespace

std::optional<QString> homeFolder() {
    const QByteArray home = homePath();
    return survivesDecoding(home) && survivesDecoding(qgetenv("XDG_CONFIG_HOME"))
               ? std::optional(QFile::decodeName(home))
               : std::nullopt;
}

std::optional<QString> exportHomeFolder() {
    auto home = homeFolder();
    if (home) {
        qputenv("HOME", QFile::encodeName(*home));
    }
    return home;
}

} // namespace vesk

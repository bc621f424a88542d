#include "app/HomeFolder.h"

#include <QFile>

#include <pwd.h>
#include <unistd.h>

namespace vesk {

QString homeFolder() {
    if (const QByteArray home = qgetenv("HOME"); !home.isEmpty()) {
        return QFile::decodeName(home);
    }
    const passwd* user = getpwuid(getuid());
    return user == nullptr ? QString() : QFile::decodeName(user->pw_dir);
}

} // namespace vesk

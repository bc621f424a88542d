#include "agent/LoginObstacle.h"

#include <QFileInfo>
#include <QStringList>

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int generatorMissing = 11;

QStringList generatorFolders() {
    QString path = qEnvironmentVariable("SYSTEMD_GENERATOR_PATH");
    if (path.isEmpty() || path.endsWith(u':')) {
        path += u"/run/systemd/user-generators:/etc/systemd/user-generators:"
                "/usr/local/lib/systemd/user-generators:/usr/lib/systemd/user-generators"_s;
    }
    return path.split(u':', Qt::SkipEmptyParts);
}

bool holdsGenerator(const QString& folder) {
    const QFileInfo file(folder + u"/vesk-agent-generator"_s);
    return file.isFile() && file.isExecutable();
}

} // namespace

std::optional<ServiceError> loginObstacle() {
    const QStringList folders = generatorFolders();
    if (std::any_of(folders.begin(), folders.end(), holdsGenerator)) {
        return std::nullopt;
    }
    const QString message =
        u"The worker cannot start at login: \"vesk-agent-generator\" is in none of the folders "
        "that systemd searches (%1)."_s;
    return serviceError(generatorMissing, message.arg(folders.join(u", "_s)));
}

} // namespace vesk

#include "agent/systemd/LaunchctlCommand.h"

#include <QCoreApplication>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace {

using namespace Qt::StringLiterals;

/// Where the user's systemd listens; told to the tool as well, which finds it the same way.
QString runtimeFolder() {
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        qputenv("XDG_RUNTIME_DIR", "/run/user/" + QByteArray::number(getuid()));
    }
    return qEnvironmentVariable("XDG_RUNTIME_DIR");
}

} // namespace

int main(int count, char** words) {
    const QCoreApplication application(count, words);
    const QString systemctl = QStandardPaths::findExecutable(u"systemctl"_s);
    const vesk::UserManager manager(
        systemctl.isEmpty() ? u"/usr/bin/systemctl"_s : systemctl, runtimeFolder());
    const auto result = vesk::performLaunchctl(QCoreApplication::arguments().sliced(1), manager);
    if (const auto* failure = std::get_if<vesk::ServiceError>(&result)) {
        std::fputs(failure->description.toUtf8().constData(), stderr);
        return std::clamp(failure->code, 1, 255);
    }
    std::fputs(std::get<QString>(result).toUtf8().constData(), stdout);
    return 0;
}

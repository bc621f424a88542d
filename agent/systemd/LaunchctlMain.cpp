#include "agent/HomeFolder.h"
#include "agent/systemd/LaunchctlCommand.h"

#include <QFile>
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

constexpr int outputFailed = 74;

bool write(const QString& text, std::FILE* stream) {
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<std::size_t>(bytes.size());
    return std::fwrite(bytes.constData(), 1, size, stream) == size && std::fflush(stream) == 0;
}

} // namespace

// No QCoreApplication: under a locale that is not UTF-8 it writes warnings, and the dashboard shows
// what this program writes as an alert.
int main(int count, char** words) {
    vesk::exportHomeFolder();
    QStringList arguments;
    for (int index = 1; index < count; ++index) {
        arguments += QFile::decodeName(words[index]);
    }
    const QString systemctl = QStandardPaths::findExecutable(u"systemctl"_s);
    const vesk::UserManager manager(
        systemctl.isEmpty() ? u"/usr/bin/systemctl"_s : systemctl, runtimeFolder());
    const auto result = vesk::performLaunchctl(arguments, manager);
    if (const auto* failure = std::get_if<vesk::ServiceError>(&result)) {
        write(failure->description, stderr);
        return std::clamp(failure->code, 1, 255);
    }
    return write(std::get<QString>(result), stdout) ? 0 : outputFailed;
}

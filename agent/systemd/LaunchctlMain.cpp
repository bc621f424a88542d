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

constexpr int outputFailed = 74;

bool write(const QString& text, std::FILE* stream) {
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<std::size_t>(bytes.size());
    return std::fwrite(bytes.constData(), 1, size, stream) == size && std::fflush(stream) == 0;
}

} // namespace

int main(int count, char** words) {
    const QCoreApplication application(count, words);
    const QString systemctl = QStandardPaths::findExecutable(u"systemctl"_s);
    const vesk::UserManager manager(
        systemctl.isEmpty() ? u"/usr/bin/systemctl"_s : systemctl, runtimeFolder());
    const auto result = vesk::performLaunchctl(QCoreApplication::arguments().sliced(1), manager);
    if (const auto* failure = std::get_if<vesk::ServiceError>(&result)) {
        write(failure->description, stderr);
        return std::clamp(failure->code, 1, 255);
    }
    return write(std::get<QString>(result), stdout) ? 0 : outputFailed;
}

#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace vesk {

/// A systemd of the test's own, with our generator. While it lives, XDG_RUNTIME_DIR leads this
/// process and its children to it.
class PrivateManager {
public:
    explicit PrivateManager(const QString& home);
    ~PrivateManager();
    Q_DISABLE_COPY_MOVE(PrivateManager)

    /// Returns when it has reached its default target; false when it cannot run here.
    [[nodiscard]] bool start();

    [[nodiscard]] bool isRunning() const { return process_.state() == QProcess::Running; }

    /// Ends it, and with it the services.
    void stop();

    /// What it wrote, its generators' words too.
    [[nodiscard]] QByteArray log() const;

    /// Runs systemctl with the arguments and returns what it wrote to standard output.
    [[nodiscard]] static QByteArray systemctl(const QStringList& arguments);

private:
    QString home_;
    QTemporaryDir folder_;
    QProcess process_;
};

} // namespace vesk

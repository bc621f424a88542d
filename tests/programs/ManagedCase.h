#pragma once

#include "agent/Launchctl.h"
#include "agent/ServiceLocations.h"
#include "tests/programs/PrivateManager.h"

#include <QObject>
#include <QTemporaryDir>

#include <memory>
#include <optional>

namespace vesk {

/// Parts of an agent's property list, as XML.
QByteArray entry(const QString& key, const QString& text);
inline const QByteArray atLoad = "<key>RunAtLoad</key><true/>";

/// Program, arguments and variables that make the probe report to a file.
QByteArray probeKeys(
    const QString& report, const QStringList& arguments = {}, QMap<QString, QString> variables = {},
    const QString& program = QStringLiteral(VESK_PROBE));

/// The unit that the service's agent becomes, and what the manager says of it.
QString unit();
QByteArray unitProperty(const QString& name);

/// A test against a real service manager of its own, with a fresh home folder for each function.
class ManagedCase : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

protected:
    static constexpr int patience = 30'000; // ms

    void putTemplate(const QByteArray& keys) const;

    [[nodiscard]] ServiceLocations locations() const { return ServiceLocations(home_.path()); }
    /// What the probe said of its last run, a field for each thing, and how often it ran.
    [[nodiscard]] QString report() const;
    [[nodiscard]] QByteArrayList fields() const;
    [[nodiscard]] qsizetype runs() const;

    ToolResult launchctl(const QStringList& arguments);
    std::optional<ServiceError> failureOf(const QStringList& arguments);
    /// Does what the start button does.
    std::optional<ServiceError> start();
    bool isLoaded();
    bool isRunning();
    /// Stops the service and has the manager know nothing of it any more.
    static void forgetService();

    QTemporaryDir home_;
    PrivateManager manager_{home_.path()};
    std::unique_ptr<Launchctl> launchctl_;
};

} // namespace vesk

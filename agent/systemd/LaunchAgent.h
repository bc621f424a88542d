#pragma once

#include "agent/ServiceError.h"

#include <QMap>
#include <QStringList>
#include <QVariant>

#include <chrono>
#include <optional>
#include <variant>

namespace vesk {

/// What a launch agent's property list asks for, checked.
struct LaunchAgent {
    enum class KeepAlive { Never, Always, AfterSuccess, AfterFailure };

    QString source; ///< the file it was read from
    QString label;
    QString program;       ///< absolute path of the executable
    QStringList arguments; ///< its own name first, never empty
    QMap<QString, QString> environment;
    std::optional<QString> workingDirectory;
    std::optional<QString> standardOutPath;
    std::optional<QString> standardErrorPath;
    bool runAtLoad = false;
    KeepAlive keepAlive = KeepAlive::Never;
    std::chrono::seconds throttleInterval{10}; ///< wait before the next run
    std::optional<int> nice;                   ///< -20 to 19
    std::optional<int> umask;                  ///< 0 to 0777

    /// Whether it is started as soon as it is loaded.
    [[nodiscard]] bool startsWhenLoaded() const {
        return runAtLoad || keepAlive != KeepAlive::Never;
    }

    bool operator==(const LaunchAgent&) const = default;
};

/// Reads an agent from a property list's top level. Unknown keys are ignored; a known one whose
/// value cannot be honoured is an error that names it.
[[nodiscard]] std::variant<LaunchAgent, ServiceError> readLaunchAgent(const QVariant& propertyList);

/// The same from the file at `path`, an absolute one.
[[nodiscard]] std::variant<LaunchAgent, ServiceError> loadLaunchAgent(const QString& path);

} // namespace vesk

#pragma once

#include "agent/systemd/LaunchAgent.h"

#include <QByteArray>
#include <QMap>

#include <optional>

namespace vesk {

/// A launch agent in the words of systemd.
struct ServiceUnit {
    QByteArray text;

    /// Symbolic links that the text counts on, name to target: systemd's settings for paths have no
    /// notation for some characters, so such a path is reached through a link with a plain name.
    QMap<QString, QString> links;

    bool operator==(const ServiceUnit&) const = default;
};

/// The name of the unit for a label; different labels give different names.
[[nodiscard]] QString unitName(const QString& label);

/// Translates an agent. `linkFolder` is where the links are going to be.
[[nodiscard]] ServiceUnit serviceUnit(const LaunchAgent& agent, const QString& linkFolder);

/// Writes an agent's unit and what belongs to it to a folder that systemd reads; both are the
/// user's only, for the agent's variables may hold secrets.
[[nodiscard]] std::optional<ServiceError>
installServiceUnit(const LaunchAgent& agent, const QString& folder);

/// Removes what `installServiceUnit` wrote.
void removeServiceUnit(const QString& label, const QString& folder);

} // namespace vesk

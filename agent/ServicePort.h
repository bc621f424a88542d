#pragma once

#include <QStringList>

#include <optional>

namespace vesk {

inline constexpr qint64 defaultServicePort = 45835;

/// The port that `argument` names: a whole 64-bit number (a sign, digits, nothing else). The range
/// is not checked: 0, -1 and 70000 are taken as they stand.
[[nodiscard]] std::optional<qint64> portNumber(const QString& argument);

/// The service's port from the process's arguments, the program first: the one that the first
/// argument after it names, else the default.
[[nodiscard]] qint64 servicePort(const QStringList& arguments);

} // namespace vesk

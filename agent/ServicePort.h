#pragma once

#include <QStringList>

namespace vesk {

inline constexpr qint64 defaultServicePort = 45835;

/// The service's port from the process's arguments, the program first: the first argument after it
/// when that is a whole 64-bit number (a sign, digits, nothing else), else the default. The range
/// is not checked: 0, -1 and 70000 are taken as they stand.
[[nodiscard]] qint64 servicePort(const QStringList& arguments);

} // namespace vesk

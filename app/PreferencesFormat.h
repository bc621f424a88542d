#pragma once

#include <QSettings>

namespace vesk {

/// How the preferences are kept: as the system does where it has a place of its own for them, else
/// in a text file of the toolkit's kind, which stays as it was when it cannot be written.
[[nodiscard]] QSettings::Format preferencesFormat();

} // namespace vesk

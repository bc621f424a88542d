#pragma once

#include <QSettings>

namespace vesk {

/// Adds each line "key=value" of the UTF-8 text to `values`; other lines are ignored. Always true,
/// as QSettings::ReadFunc demands for a file that is to be used.
[[nodiscard]] bool readPreferences(QIODevice& device, QSettings::SettingsMap& values);

/// Writes the group "General" with a line "key=value" for each of `values`. False when the device
/// did not take all of it; what a file buffers is flushed before that is known.
[[nodiscard]] bool writePreferences(QIODevice& device, const QSettings::SettingsMap& values);

} // namespace vesk

#include "app/PreferencesFormat.h"

#include "app/PreferencesFile.h"

namespace vesk {

QSettings::Format preferencesFormat() {
    static const auto format = QSettings::registerFormat(
        QStringLiteral("conf"), readPreferences, writePreferences, Qt::CaseSensitive);
    return format;
}

} // namespace vesk

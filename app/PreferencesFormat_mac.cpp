#include "app/PreferencesFormat.h"

namespace vesk {

QSettings::Format preferencesFormat() {
    return QSettings::NativeFormat;
}

} // namespace vesk

#include "ui/tray/TrayIcon.h"

namespace vesk {

bool traysAreTinted() {
    return false;
}

} // namespace vesk

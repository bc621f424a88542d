#include "ui/tray/TrayIcon.h"

namespace vesk {

bool traysAreTinted() {
    return true;
}

} // namespace vesk

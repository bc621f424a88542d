#include "ui/kit/WindowActivation.h"

#include <QWidget>

namespace vesk {

void activateForUser(QWidget& window) {
    window.activateWindow();
}

void completeUnusedStartup() {}

} // namespace vesk

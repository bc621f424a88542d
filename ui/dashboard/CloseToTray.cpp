#include "ui/dashboard/CloseToTray.h"

namespace vesk {

using namespace std::chrono_literals;

CloseToTray::CloseToTray() {
    absence_.setSingleShot(true);
    absence_.setInterval(10s);
    settling_.setSingleShot(true);
    settling_.setInterval(1s);
    connect(&absence_, &QTimer::timeout, this, &CloseToTray::place);
}

void CloseToTray::setTrayPresent(bool present) {
    if (present == trayPresent_) {
        return;
    }
    trayPresent_ = present;
    if (present) {
        absence_.stop();
    } else {
        absence_.start();
    }
    place();
}

void CloseToTray::close() {
    closed_ = true;
    place();
}

void CloseToTray::open() {
    closed_ = false;
}

void CloseToTray::noteAttention() {
    if (!settling_.isActive()) {
        open();
    }
}

void CloseToTray::place() {
    if (!closed_) {
        return;
    }
    settling_.start();
    if (trayPresent_ || absence_.isActive()) {
        emit hideRequested();
    } else {
        emit minimizeRequested();
    }
}

} // namespace vesk

#include "Placement.h"

#include "tests/simulation/VirtualTime.h"

namespace vesk {

using namespace std::chrono_literals;

namespace {

/// For how long after it was minimised a window may have been restored by the window manager alone.
constexpr auto settling = 1s;

TimePoint now() {
    return VirtualTime::instance().now();
}

} // namespace

void Placement::launched(bool trayPresent) {
    closed_ = false;
    trayPresent_ = trayPresent;
    trayGone_.reset();
}

void Placement::restored() {
    if (closed_ == true && trayGone_ && now() <= *trayGone_ + grace + settling) {
        closed_.reset();
    } else {
        closed_ = false;
    }
}

void Placement::activated() {
    if (closed_ == true) {
        closed_.reset();
    }
}

void Placement::trayChanged(const Tray& tray) {
    if (!tray.present && trayPresent_) {
        trayGone_ = now();
    }
    trayPresent_ = tray.present;
    if (closed_ == true && tray.windowShown) {
        // In sight although it was to be minimised: the user may be at it.
        closed_.reset();
    }
}

std::optional<bool> Placement::mustBeHidden() const {
    return closed_ ? std::optional(*closed_ && reachable()) : std::nullopt;
}

bool Placement::reachable() const {
    return trayPresent_ || (trayGone_ && now() - *trayGone_ < grace);
}

} // namespace vesk

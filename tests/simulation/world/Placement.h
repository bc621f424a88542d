#pragma once

#include "model/Timing.h"

#include <optional>

namespace vesk {

/// The part of the witness that knows whether the dashboard window has to be hidden: a closed one
/// is, while the tray can bring it back or has been gone for less than ten seconds.
class Placement {
public:
    /// For how long a tray that has gone counts as there.
    static constexpr std::chrono::seconds grace{10};

    void launched(bool trayPresent);

    /// The user closed the window.
    void close() { closed_ = true; }

    /// The user or the program opened it.
    void open() { closed_ = false; }

    /// The desktop restored it from being minimised.
    void restored();

    /// The desktop activated it, which may have been active before.
    void activated();

    struct Tray {
        bool present = false;
        bool windowShown = false; ///< at that time
    };
    void trayChanged(const Tray& tray);

    /// Nothing where that cannot be known from outside.
    [[nodiscard]] std::optional<bool> mustBeHidden() const;

private:
    [[nodiscard]] bool reachable() const;

    std::optional<bool> closed_;
    bool trayPresent_ = false;
    std::optional<TimePoint> trayGone_; ///< while the program ran
};

} // namespace vesk

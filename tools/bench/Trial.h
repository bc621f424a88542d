#pragma once

#include "tools/bench/Peer.h"
#include "tools/bench/Program.h"
#include "tools/bench/Screen.h"

#include <array>
#include <chrono>

namespace vesk::bench {

enum class Kind { Bare, Ours };

/// The two that are compared, in the order in which their figures are told.
inline constexpr std::array kinds{Kind::Bare, Kind::Ours};

/// Where a program is run and with what.
struct Situation {
    Document document;
    bool hidden;
    /// How often the dashboard asks in it; the bare program is told to do the same.
    std::chrono::milliseconds interval;
};

/// One of the two programs with a peer of its own, shown on the screen or minimised.
class Trial {
public:
    /// Returns when its window is there. `place` also tells its home from those of others that run
    /// at the same time.
    Trial(Screen& screen, Kind kind, const Situation& situation, int place);

    [[nodiscard]] pid_t pid() const { return program_.pid(); }
    [[nodiscard]] const Peer& peer() const { return peer_; }
    [[nodiscard]] xcb_window_t window() const { return shown_.window; }

    /// From the start of the program until its window was visible.
    [[nodiscard]] std::chrono::nanoseconds startTime() const {
        return shown_.when - program_.began();
    }

    /// Milliseconds of processor time a fetch, over that many. Throws when they do not come as
    /// often as the situation says: it is another one then.
    [[nodiscard]] double cpuPerFetch(int fetches) const;

    /// Milliseconds of processor time a minute.
    [[nodiscard]] double cpuPerMinute(std::chrono::seconds duration) const;

private:
    Situation situation_;
    Peer peer_;
    Program program_;
    Screen::Shown shown_;
};

} // namespace vesk::bench

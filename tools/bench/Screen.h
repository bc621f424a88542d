#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <sys/types.h>
#include <xcb/xcb.h>

namespace vesk::bench {

using SteadyTime = std::chrono::steady_clock::time_point;

/// The windows of other programs, as one sees them from outside. It wants a window manager that
/// gives each window a frame.
class Screen {
public:
    /// Of the display that the environment names.
    Screen();

    struct Shown {
        xcb_window_t window;
        SteadyTime when;
    };

    /// The next window of that process that becomes visible; throws when none does.
    [[nodiscard]] Shown awaitWindow(pid_t pid);

    /// Puts a window of the usual size where none of the eleven numbers before it is.
    void place(const Shown& shown, int number);

    /// Returns once it cannot be seen any more.
    void minimise(xcb_window_t window);

    /// The longest time that a window's program took to answer "are you there?", asked again and
    /// again for that long.
    [[nodiscard]] std::chrono::nanoseconds
    longestAnswer(xcb_window_t window, std::chrono::milliseconds duration);

private:
    struct Freed {
        void operator()(void* memory) const;
    };
    struct Message {
        xcb_window_t to;
        xcb_window_t about;
        xcb_atom_t kind;
        xcb_client_message_data_t data;
    };
    using Event = std::unique_ptr<xcb_generic_event_t, Freed>;

    [[nodiscard]] xcb_atom_t atom(const char* name);
    /// The value of a property; nothing without one.
    [[nodiscard]] std::optional<uint32_t>
    number(xcb_window_t window, xcb_atom_t name, xcb_atom_t type);
    void awaitManager();
    void tell(const Message& message);
    /// Nothing when none came in time.
    [[nodiscard]] Event nextEvent(SteadyTime deadline);

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
    xcb_window_t root_ = 0;
    xcb_atom_t pidAtom_ = 0;
    xcb_atom_t changeState_ = 0;
    xcb_atom_t protocols_ = 0;
    xcb_atom_t ping_ = 0;
    std::map<xcb_window_t, xcb_window_t> clientOfFrame_;
};

} // namespace vesk::bench

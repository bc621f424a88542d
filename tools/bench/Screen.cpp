#include "tools/bench/Screen.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace vesk::bench {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

namespace {

constexpr auto patience = 20s;
constexpr uint8_t sentByClient = 0x80;

template<typename Particular>
const Particular& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Particular&>(event);
}

} // namespace

void Screen::Freed::operator()(void* memory) const {
    std::free(memory);
}

Screen::Screen() : connection_(xcb_connect(nullptr, nullptr), xcb_disconnect) {
    if (xcb_connection_has_error(connection_.get()) != 0) {
        throw std::runtime_error("there is no X display");
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
    pidAtom_ = atom("_NET_WM_PID");
    changeState_ = atom("WM_CHANGE_STATE");
    protocols_ = atom("WM_PROTOCOLS");
    ping_ = atom("_NET_WM_PING");
    // Answers come as events of the root window's own structure.
    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY
                          | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_.get(), root_, XCB_CW_EVENT_MASK, &mask);
    awaitManager();
}

void Screen::awaitManager() {
    const xcb_atom_t check = atom("_NET_SUPPORTING_WM_CHECK");
    const auto deadline = steady_clock::now() + patience;
    while (!number(root_, check, XCB_ATOM_WINDOW)) {
        if (!nextEvent(deadline)) {
            throw std::runtime_error("there is no window manager");
        }
    }
}

Screen::Shown Screen::awaitWindow(pid_t pid) {
    const auto deadline = steady_clock::now() + patience;
    while (const Event event = nextEvent(deadline)) {
        const auto when = steady_clock::now();
        const int type = event->response_type & ~sentByClient;
        if (type == XCB_REPARENT_NOTIFY) {
            const auto& notice = as<xcb_reparent_notify_event_t>(*event);
            clientOfFrame_[notice.parent] = notice.window;
        } else if (type == XCB_MAP_NOTIFY) {
            const auto found = clientOfFrame_.find(as<xcb_map_notify_event_t>(*event).window);
            if (found != clientOfFrame_.end()
                && number(found->second, pidAtom_, XCB_ATOM_CARDINAL)
                       == static_cast<uint32_t>(pid)) {
                return {.window = found->second, .when = when};
            }
        }
    }
    throw std::runtime_error("process " + std::to_string(pid) + " showed no window");
}

void Screen::place(const Shown& shown, int number) {
    constexpr int columns = 3;
    constexpr int rows = 4;
    constexpr int width = 760;
    constexpr int height = 440;
    constexpr int frame = 30;
    const std::array position{
        static_cast<uint32_t>(number % columns * width + frame),
        static_cast<uint32_t>(number / columns % rows * height + frame)};
    xcb_configure_window(
        connection_.get(), shown.window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
        position.data());
    xcb_flush(connection_.get());
}

void Screen::minimise(xcb_window_t window) {
    constexpr uint32_t iconic = 3;
    tell({.to = root_, .about = window, .kind = changeState_, .data = {.data32 = {iconic}}});
    const auto deadline = steady_clock::now() + patience;
    while (const Event event = nextEvent(deadline)) {
        if ((event->response_type & ~sentByClient) == XCB_UNMAP_NOTIFY) {
            const auto found = clientOfFrame_.find(as<xcb_unmap_notify_event_t>(*event).window);
            if (found != clientOfFrame_.end() && found->second == window) {
                return;
            }
        }
    }
    throw std::runtime_error("a window was not minimised");
}

std::chrono::nanoseconds
Screen::longestAnswer(xcb_window_t window, std::chrono::milliseconds duration) {
    constexpr auto pause = 2ms;
    const auto end = steady_clock::now() + duration;
    std::vector<SteadyTime> asked;
    std::size_t answered = 0;
    std::chrono::nanoseconds longest{};
    while (asked.size() > answered || steady_clock::now() < end) {
        const auto now = steady_clock::now();
        if (now < end) {
            // The time stamp comes back as it went out: here it is a number.
            tell(
                {.to = window,
                 .about = window,
                 .kind = protocols_,
                 .data = {.data32 = {ping_, static_cast<uint32_t>(asked.size()), window}}});
            asked.push_back(now);
        } else if (now > end + patience) {
            throw std::runtime_error("a program does not answer any more");
        }
        const auto next = now + pause;
        while (const Event event = nextEvent(next)) {
            if ((event->response_type & ~sentByClient) != XCB_CLIENT_MESSAGE) {
                continue;
            }
            const auto& message = as<xcb_client_message_event_t>(*event);
            if (message.type == protocols_ && message.data.data32[0] == ping_
                && message.data.data32[2] == window) {
                const auto took = steady_clock::now() - asked.at(message.data.data32[1]);
                longest = std::max<std::chrono::nanoseconds>(longest, took);
                ++answered;
            }
        }
    }
    return longest;
}

xcb_atom_t Screen::atom(const char* name) {
    const auto length = static_cast<uint16_t>(std::strlen(name));
    const std::unique_ptr<xcb_intern_atom_reply_t, Freed> reply(xcb_intern_atom_reply(
        connection_.get(), xcb_intern_atom(connection_.get(), 0, length, name), nullptr));
    return reply ? reply->atom : xcb_atom_t{};
}

std::optional<uint32_t> Screen::number(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) {
    const std::unique_ptr<xcb_get_property_reply_t, Freed> reply(xcb_get_property_reply(
        connection_.get(), xcb_get_property(connection_.get(), 0, window, name, type, 0, 1),
        nullptr));
    uint32_t value = 0;
    if (!reply || xcb_get_property_value_length(reply.get()) != sizeof value) {
        return std::nullopt;
    }
    std::memcpy(&value, xcb_get_property_value(reply.get()), sizeof value);
    return value;
}

void Screen::tell(const Message& message) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = message.about;
    event.type = message.kind;
    event.data = message.data;
    // The window manager is told by way of the root window.
    constexpr uint32_t ofManager =
        XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    const uint32_t mask = message.to == root_ ? ofManager : 0;
    xcb_send_event(connection_.get(), 0, message.to, mask, reinterpret_cast<const char*>(&event));
    xcb_flush(connection_.get());
}

Screen::Event Screen::nextEvent(SteadyTime deadline) {
    for (;;) {
        if (Event event(xcb_poll_for_event(connection_.get())); event) {
            return event;
        }
        if (xcb_connection_has_error(connection_.get()) != 0) {
            throw std::runtime_error("the X display is gone");
        }
        const auto left = deadline - steady_clock::now();
        if (left <= 0s) {
            return nullptr;
        }
        pollfd wait{
            .fd = xcb_get_file_descriptor(connection_.get()), .events = POLLIN, .revents = 0};
        const timespec time{
            .tv_sec = std::chrono::floor<std::chrono::seconds>(left).count(),
            .tv_nsec = static_cast<long>((left % 1s).count())};
        ppoll(&wait, 1, &time, nullptr);
    }
}

} // namespace vesk::bench

#pragma once

#include <QByteArrayView>

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

/// What several X11 files need of the server. Main thread only.
namespace vesk::x11 {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

/// A reply or an error of xcb's.
template<typename Reply>
using ReplyPtr = std::unique_ptr<Reply, FreeReply>;

/// Qt's connection to the X server; null on other platforms.
[[nodiscard]] xcb_connection_t* connection();

/// The number of the screen that DISPLAY names.
[[nodiscard]] int screenNumber();

[[nodiscard]] xcb_window_t rootWindow(xcb_connection_t* connection);

[[nodiscard]] xcb_atom_t atom(xcb_connection_t* connection, QByteArrayView name);

/// The values of a property with 32-bit items; empty if the window has none.
[[nodiscard]] std::vector<uint32_t>
property(xcb_connection_t* connection, xcb_window_t window, QByteArrayView name);

struct EventSelection {
    xcb_window_t window = XCB_WINDOW_NONE;
    uint32_t events = XCB_EVENT_MASK_NO_EVENT;
};

/// Selects events of a window in addition to those that this client, Qt for its part, has selected.
/// False if the window does not exist any more.
bool selectEvents(xcb_connection_t* connection, const EventSelection& selection);

} // namespace vesk::x11

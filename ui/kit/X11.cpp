#include "ui/kit/X11.h"

#include <QGuiApplication>

namespace vesk::x11 {

xcb_connection_t* connection() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // Platforms that draw without an X server may offer the interface without a connection.
    return x11 == nullptr ? nullptr : x11->connection();
}

int screenNumber() {
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) != 0) {
        std::free(host);
    }
    return screen;
}

xcb_window_t rootWindow(xcb_connection_t* connection) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int screen = screenNumber(); screen > 0 && screens.rem > 1; --screen) {
        xcb_screen_next(&screens);
    }
    return screens.data->root;
}

xcb_atom_t atom(xcb_connection_t* connection, QByteArrayView name) {
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.data());
    const ReplyPtr<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::vector<uint32_t>
property(xcb_connection_t* connection, xcb_window_t window, QByteArrayView name) {
    constexpr uint32_t mostItems = 1024;
    constexpr uint8_t itemBits = 32;
    const auto cookie =
        xcb_get_property(connection, 0, window, atom(connection, name), XCB_ATOM_ANY, 0, mostItems);
    const ReplyPtr<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply || reply->format != itemBits) {
        return {};
    }
    const auto* items = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
    return {items, items + reply->value_len};
}

bool selectEvents(xcb_connection_t* connection, const EventSelection& selection) {
    // Both answers are waited for, because xcb hands an error that nothing takes to Qt, which logs
    // it.
    const ReplyPtr<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, selection.window), nullptr));
    if (!attributes) {
        return false;
    }
    const uint32_t mask = attributes->your_event_mask | selection.events;
    const ReplyPtr<xcb_generic_error_t> error(xcb_request_check(
        connection, xcb_change_window_attributes_checked(
                        connection, selection.window, XCB_CW_EVENT_MASK, &mask)));
    return !error;
}

} // namespace vesk::x11

#include "ui/tray/XembedTray.h"

#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace vesk {

namespace {

struct Freed {
    void operator()(void* reply) const { std::free(reply); }
};

template<typename Reply>
using ReplyPtr = std::unique_ptr<Reply, Freed>;

int screenNumber() {
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) != 0) {
        std::free(host);
    }
    return screen;
}

xcb_window_t rootOf(xcb_connection_t* connection, int screen) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screen > 0 && screens.rem > 1; --screen) {
        xcb_screen_next(&screens);
    }
    return screens.data->root;
}

xcb_intern_atom_cookie_t request(xcb_connection_t* connection, std::string_view name) {
    return xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.data());
}

xcb_atom_t atomOf(xcb_connection_t* connection, xcb_intern_atom_cookie_t cookie) {
    const ReplyPtr<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace

XembedTray::XembedTray() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // Platforms that draw without an X server may offer the interface without a connection.
    if (x11 == nullptr || x11->connection() == nullptr) {
        return;
    }
    connection_ = x11->connection();
    const int screen = screenNumber();
    root_ = rootOf(connection_, screen);
    const auto selection = request(connection_, "_NET_SYSTEM_TRAY_S" + std::to_string(screen));
    const auto manager = request(connection_, "MANAGER");
    selection_ = atomOf(connection_, selection);
    manager_ = atomOf(connection_, manager);
    static_cast<void>(hearStructure(root_));
    QCoreApplication::instance()->installNativeEventFilter(this);
    lookForOwner();
}

bool XembedTray::nativeEventFilter(const QByteArray& /*type*/, void* message, qintptr* /*result*/) {
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    constexpr uint8_t sentByClient = 0x80;
    switch (event->response_type & ~sentByClient) {
    case XCB_CLIENT_MESSAGE: {
        // A tray that is new tells everyone.
        const auto* notice = reinterpret_cast<const xcb_client_message_event_t*>(event);
        if (notice->type == manager_ && notice->data.data32[1] == selection_) {
            lookForOwner();
        }
        break;
    }
    case XCB_DESTROY_NOTIFY: {
        const auto* notice = reinterpret_cast<const xcb_destroy_notify_event_t*>(event);
        if (owner_ != XCB_WINDOW_NONE && notice->window == owner_) {
            lookForOwner();
        }
        break;
    }
    default:
        break;
    }
    return false;
}

bool XembedTray::hearStructure(xcb_window_t window) const {
    // The toolkit has chosen its events for this window: ours come on top of them. The window may
    // be gone at any moment, so both answers are waited for: an error that nobody takes is printed.
    const ReplyPtr<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        connection_, xcb_get_window_attributes(connection_, window), nullptr));
    if (!attributes) {
        return false;
    }
    const uint32_t mask = attributes->your_event_mask | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    const ReplyPtr<xcb_generic_error_t> error(xcb_request_check(
        connection_,
        xcb_change_window_attributes_checked(connection_, window, XCB_CW_EVENT_MASK, &mask)));
    return !error;
}

void XembedTray::lookForOwner() {
    const ReplyPtr<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        connection_, xcb_get_selection_owner(connection_, selection_), nullptr));
    const xcb_window_t owner =
        reply && reply->owner != XCB_WINDOW_NONE && hearStructure(reply->owner)
            ? reply->owner
            : xcb_window_t{XCB_WINDOW_NONE};
    if (owner != owner_) {
        owner_ = owner;
        emit changed();
    }
}

} // namespace vesk

#include "ui/tray/XembedTray.h"

#include "ui/kit/X11.h"

#include <QCoreApplication>

namespace vesk {

XembedTray::XembedTray() {
    connection_ = x11::connection();
    if (connection_ == nullptr) {
        return;
    }
    root_ = x11::rootWindow(connection_);
    selection_ =
        x11::atom(connection_, "_NET_SYSTEM_TRAY_S" + QByteArray::number(x11::screenNumber()));
    manager_ = x11::atom(connection_, "MANAGER");
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
    return x11::selectEvents(
        connection_, {.window = window, .events = XCB_EVENT_MASK_STRUCTURE_NOTIFY});
}

void XembedTray::lookForOwner() {
    const x11::ReplyPtr<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
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

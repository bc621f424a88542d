#include "ui/dashboard/ObscuredWatch.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QWindow>

#include <xcb/xcb.h>

#include <cstdlib>
#include <utility>

namespace vesk {

namespace {

/// X11 keeps a covered window exposed and reports its cover through VisibilityNotify (X Window
/// System Protocol, chapter 11).
class X11ObscuredWatch final : public ObscuredWatch, public QAbstractNativeEventFilter {
public:
    X11ObscuredWatch(
        xcb_connection_t* connection, xcb_window_t window, std::function<void()> changed)
        : window_(window), changed_(std::move(changed)) {
        // The toolkit has chosen its events for this window: ours comes on top of them.
        xcb_get_window_attributes_reply_t* attributes = xcb_get_window_attributes_reply(
            connection, xcb_get_window_attributes(connection, window_), nullptr);
        if (attributes == nullptr) {
            return;
        }
        const uint32_t mask = attributes->your_event_mask | XCB_EVENT_MASK_VISIBILITY_CHANGE;
        std::free(attributes);
        xcb_change_window_attributes(connection, window_, XCB_CW_EVENT_MASK, &mask);
        xcb_flush(connection);
        QGuiApplication::instance()->installNativeEventFilter(this);
    }

    [[nodiscard]] bool isFullyObscured() const override { return fullyObscured_; }

    bool
    nativeEventFilter(const QByteArray& /*type*/, void* message, qintptr* /*result*/) override {
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        constexpr uint8_t sentByClient = 0x80;
        if ((event->response_type & ~sentByClient) != XCB_VISIBILITY_NOTIFY) {
            return false;
        }
        const auto* notice = reinterpret_cast<const xcb_visibility_notify_event_t*>(event);
        if (notice->window == window_) {
            fullyObscured_ = notice->state == XCB_VISIBILITY_FULLY_OBSCURED;
            changed_();
        }
        return false;
    }

private:
    xcb_window_t window_;
    std::function<void()> changed_;
    bool fullyObscured_ = false;
};

} // namespace

std::unique_ptr<ObscuredWatch>
ObscuredWatch::make(const QWindow& window, std::function<void()> changed) {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // Platforms that draw without an X server may offer the interface without a connection.
    if (x11 == nullptr || x11->connection() == nullptr) {
        return nullptr;
    }
    return std::make_unique<X11ObscuredWatch>(
        x11->connection(), static_cast<xcb_window_t>(window.winId()), std::move(changed));
}

} // namespace vesk

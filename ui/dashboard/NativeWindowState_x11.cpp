#include "ui/dashboard/NativeWindowState.h"

#include "ui/kit/X11.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QWindow>

#include <utility>

namespace vesk {

namespace {

/// X11 keeps a covered window exposed and reports its cover through VisibilityNotify (X Window
/// System Protocol, chapter 11). Whether a window is minimised is what the window manager writes
/// into WM_STATE (Inter-Client Communication Conventions Manual, 4.1.3.1): Qt assumes it after its
/// own request, which some window managers ignore.
class X11WindowState final : public NativeWindowState, public QAbstractNativeEventFilter {
public:
    X11WindowState(xcb_connection_t* connection, xcb_window_t window, std::function<void()> changed)
        : connection_(connection),
          window_(window),
          wmState_(x11::atom(connection, "WM_STATE")),
          changed_(std::move(changed)) {
        x11::selectEvents(
            connection_,
            {.window = window_,
             .events = XCB_EVENT_MASK_VISIBILITY_CHANGE | XCB_EVENT_MASK_PROPERTY_CHANGE});
        minimized_ = readMinimized();
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    [[nodiscard]] bool isFullyObscured() const override { return fullyObscured_; }

    [[nodiscard]] bool isMinimized() const override { return minimized_; }

    bool
    nativeEventFilter(const QByteArray& /*type*/, void* message, qintptr* /*result*/) override {
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        constexpr uint8_t sentByClient = 0x80;
        switch (event->response_type & ~sentByClient) {
        case XCB_VISIBILITY_NOTIFY: {
            const auto* notice = reinterpret_cast<const xcb_visibility_notify_event_t*>(event);
            if (notice->window == window_) {
                fullyObscured_ = notice->state == XCB_VISIBILITY_FULLY_OBSCURED;
                changed_();
            }
            break;
        }
        case XCB_PROPERTY_NOTIFY: {
            const auto* notice = reinterpret_cast<const xcb_property_notify_event_t*>(event);
            if (notice->window == window_ && notice->atom == wmState_) {
                minimized_ = readMinimized();
                changed_();
            }
            break;
        }
        default:
            break;
        }
        return false;
    }

private:
    [[nodiscard]] bool readMinimized() const {
        constexpr uint32_t iconic = 3;
        const auto state = x11::property(connection_, window_, "WM_STATE");
        return !state.empty() && state[0] == iconic;
    }

    xcb_connection_t* connection_;
    xcb_window_t window_;
    xcb_atom_t wmState_;
    std::function<void()> changed_;
    bool fullyObscured_ = false;
    bool minimized_ = false;
};

} // namespace

std::unique_ptr<NativeWindowState>
NativeWindowState::make(const QWindow& window, std::function<void()> changed) {
    xcb_connection_t* connection = x11::connection();
    if (connection == nullptr) {
        return nullptr;
    }
    return std::make_unique<X11WindowState>(
        connection, static_cast<xcb_window_t>(window.winId()), std::move(changed));
}

} // namespace vesk

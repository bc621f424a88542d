#include "ui/kit/StartupId.h"
#include "ui/kit/TransientParent.h"
#include "ui/kit/WindowActivation.h"
#include "ui/kit/X11.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <array>
#include <utility>

namespace vesk {

namespace {

constexpr auto tokenVariable = "XDG_ACTIVATION_TOKEN";

QByteArray takeToken() {
    QByteArray token = qgetenv(tokenVariable);
    qunsetenv(tokenVariable);
    return token;
}

/// The launcher shows a busy cursor until this message (Startup Notification Protocol). `sender` is
/// any window of this program or the root window.
void completeStartup(
    xcb_connection_t* connection, xcb_window_t sender, const QByteArray& startupId) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 8;
    event.window = sender;
    event.type = x11::atom(connection, "_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t further = x11::atom(connection, "_NET_STARTUP_INFO");
    constexpr qsizetype size = sizeof event.data.data8;
    const QByteArray text = startupRemoval(startupId);
    for (qsizetype at = 0; at < text.size(); at += size) {
        const QByteArray part = text.mid(at, size).leftJustified(size, '\0');
        std::copy(part.begin(), part.end(), event.data.data8);
        xcb_send_event(
            connection, 0, x11::rootWindow(connection), XCB_EVENT_MASK_PROPERTY_CHANGE,
            reinterpret_cast<const char*>(&event));
        event.type = further;
    }
    xcb_flush(connection);
}

/// A request to the window manager about a window.
struct Message {
    xcb_window_t window = XCB_WINDOW_NONE;
    xcb_atom_t type = XCB_ATOM_NONE;
    std::array<uint32_t, 2> values{};
};

/// Asks the server for its time by a change of a property of the window, then activates the window.
class Activation final : public QObject, public QAbstractNativeEventFilter {
public:
    Activation(xcb_connection_t* connection, QWidget& window, QByteArray startupId)
        : QObject(&window),
          connection_(connection),
          root_(x11::rootWindow(connection)),
          window_(static_cast<xcb_window_t>(window.winId())),
          timeProperty_(x11::atom(connection, "_VESK_TIME")),
          startupId_(std::move(startupId)) {
        QCoreApplication::instance()->installNativeEventFilter(this);
        constexpr uint8_t itemBits = 8;
        xcb_change_property(
            connection_, XCB_PROP_MODE_APPEND, window_, timeProperty_, XCB_ATOM_STRING, itemBits, 0,
            nullptr);
        xcb_flush(connection_);
    }

    bool
    nativeEventFilter(const QByteArray& /*type*/, void* message, qintptr* /*result*/) override {
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        constexpr uint8_t sentByClient = 0x80;
        if ((event->response_type & ~sentByClient) != XCB_PROPERTY_NOTIFY) {
            return false;
        }
        const auto* notice = reinterpret_cast<const xcb_property_notify_event_t*>(event);
        if (notice->window == window_ && notice->atom == timeProperty_) {
            QCoreApplication::instance()->removeNativeEventFilter(this);
            activate(startupTime(startupId_).value_or(notice->time));
            if (!startupId_.isEmpty()) {
                completeStartup(connection_, window_, startupId_);
            }
            deleteLater();
        }
        return false;
    }

private:
    void activate(xcb_timestamp_t time) {
        auto* widget = static_cast<QWidget*>(parent());
        if (!widget->isVisible() || widget->winId() != window_) {
            return;
        }
        constexpr uint8_t itemBits = 32;
        xcb_change_property(
            connection_, XCB_PROP_MODE_REPLACE, window_,
            x11::atom(connection_, "_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, itemBits, 1, &time);
        moveToCurrentWorkspace(*widget->windowHandle());
        const auto supported = x11::property(connection_, root_, "_NET_SUPPORTED");
        const xcb_atom_t activeWindow = x11::atom(connection_, "_NET_ACTIVE_WINDOW");
        if (std::find(supported.begin(), supported.end(), activeWindow) == supported.end()) {
            widget->activateWindow();
        } else {
            // Source 2, a direct action of the user: some window managers only mark a window whose
            // own application asks (Extended Window Manager Hints, "Root Window Messages").
            constexpr uint32_t byUser = 2;
            send({.window = window_, .type = activeWindow, .values = {byUser, time}});
        }
        xcb_flush(connection_);
    }

    /// With the dialogs of the window, which some window managers would leave behind.
    void moveToCurrentWorkspace(const QWindow& window) {
        constexpr uint32_t everyWorkspace = 0xFFFFFFFF;
        const auto current = x11::property(connection_, root_, "_NET_CURRENT_DESKTOP");
        const auto own = x11::property(connection_, window_, "_NET_WM_DESKTOP");
        if (current.empty() || own.empty() || own[0] == current[0] || own[0] == everyWorkspace) {
            return;
        }
        for (const QWindow* each : QGuiApplication::topLevelWindows()) {
            if (each->isVisible() && &rootTransientParent(*each) == &rootTransientParent(window)) {
                constexpr uint32_t byUser = 2;
                send(
                    {.window = static_cast<xcb_window_t>(each->winId()),
                     .type = x11::atom(connection_, "_NET_WM_DESKTOP"),
                     .values = {current[0], byUser}});
            }
        }
    }

    void send(const Message& message) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = message.window;
        event.type = message.type;
        std::copy(message.values.begin(), message.values.end(), event.data.data32);
        xcb_send_event(
            connection_, 0, root_,
            XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
            reinterpret_cast<const char*>(&event));
    }

    xcb_connection_t* connection_;
    xcb_window_t root_;
    xcb_window_t window_;
    xcb_atom_t timeProperty_;
    QByteArray startupId_;
};

} // namespace

void activateForUser(QWidget& window) {
    xcb_connection_t* connection = x11::connection();
    if (connection == nullptr) {
        window.activateWindow();
        return;
    }
    new Activation(connection, window, takeToken());
}

void completeUnusedStartup() {
    xcb_connection_t* connection = x11::connection();
    if (connection != nullptr && qEnvironmentVariableIsSet(tokenVariable)) {
        completeStartup(connection, x11::rootWindow(connection), takeToken());
    }
}

} // namespace vesk

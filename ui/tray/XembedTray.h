#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <xcb/xcb.h>

namespace vesk {

/// Knows whether an X11 desktop has a tray of the old kind, which items are embedded in
/// (freedesktop's System Tray Protocol): it owns a selection while it is there.
class XembedTray final : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    /// Without an X server there is none, ever.
    XembedTray();

    [[nodiscard]] bool isPresent() const { return owner_ != XCB_WINDOW_NONE; }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

signals:
    /// Also when another one took over.
    void changed();

private:
    /// Whether that window is still there.
    [[nodiscard]] bool hearStructure(xcb_window_t window) const;
    void lookForOwner();

    xcb_connection_t* connection_ = nullptr;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    xcb_atom_t selection_ = XCB_ATOM_NONE;
    xcb_atom_t manager_ = XCB_ATOM_NONE;
    xcb_window_t owner_ = XCB_WINDOW_NONE;
};

} // namespace vesk

#pragma once

#include <functional>
#include <memory>

class QWindow;

namespace vesk {

/// The state of a window as the window system has it, where Qt's own notion differs. Main thread
/// only.
class NativeWindowState {
public:
    NativeWindowState() = default;
    NativeWindowState(const NativeWindowState&) = delete;
    NativeWindowState& operator=(const NativeWindowState&) = delete;
    virtual ~NativeWindowState() = default;

    /// Whether other windows cover the window wholly.
    [[nodiscard]] virtual bool isFullyObscured() const = 0;

    /// Whether the window manager has minimised the window, asked or not.
    [[nodiscard]] virtual bool isMinimized() const = 0;

    /// The state of `window`, which has a native handle; null where Qt's notion is right. `changed`
    /// is called after each change.
    [[nodiscard]] static std::unique_ptr<NativeWindowState>
    make(const QWindow& window, std::function<void()> changed);
};

} // namespace vesk

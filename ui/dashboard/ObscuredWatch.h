#pragma once

#include <functional>
#include <memory>

class QWindow;

namespace vesk {

/// Knows whether other windows cover a window wholly, where the toolkit's own notion of an exposed
/// window does not tell.
class ObscuredWatch {
public:
    ObscuredWatch() = default;
    ObscuredWatch(const ObscuredWatch&) = delete;
    ObscuredWatch& operator=(const ObscuredWatch&) = delete;
    virtual ~ObscuredWatch() = default;

    [[nodiscard]] virtual bool isFullyObscured() const = 0;

    /// A watch over `window`, which has a native handle; null where exposure already tells.
    [[nodiscard]] static std::unique_ptr<ObscuredWatch>
    make(const QWindow& window, std::function<void()> changed);
};

} // namespace vesk

#pragma once

class QWindow;

namespace vesk {

/// The topmost transient ancestor of `window`, or `window` itself.
[[nodiscard]] const QWindow& rootTransientParent(const QWindow& window);

} // namespace vesk

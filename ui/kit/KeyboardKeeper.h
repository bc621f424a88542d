#pragma once

class QWidget;

namespace vesk {

/// Remembers that a control had the keyboard when it was disabled for a moment, where the toolkit
/// would hand it to the next control for good.
class KeyboardKeeper {
public:
    /// Enables or disables `view`. True when `view`, enabled again, is to take the keyboard back:
    /// it went nowhere else meanwhile.
    [[nodiscard]] bool setEnabled(QWidget& view, bool enabled);

private:
    bool owed_ = false;
};

} // namespace vesk

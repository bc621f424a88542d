#pragma once

#include <QPointer>
#include <QWidget>

namespace vesk {

/// Disables controls for a while, one keeper a window. The toolkit would hand the keyboard of a
/// disabled control to the next one, where a key meant for the first does something else; here
/// nobody has it until a person moves it or the control is enabled again.
class KeyboardKeeper {
public:
    /// Enables or disables `view`. True when `view`, enabled again, is to take the keyboard back:
    /// it was the last to give it up, and it went nowhere else meanwhile.
    [[nodiscard]] bool setEnabled(QWidget& view, bool enabled);

private:
    QPointer<QWidget> owedTo_;
};

} // namespace vesk

#pragma once

#include <Qt>

class QPoint;
class QWidget;

/// What a person's hand does, given to the program as a window system gives it: a window that
/// another blocks gets nothing.
namespace vesk::hand {

/// On the left part of a control, where check boxes have their box.
void click(const QWidget& control);

/// At a place in a window.
void clickAt(const QWidget& window, const QPoint& place);

/// A key to a window.
void press(const QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

/// The window manager's close button.
void close(const QWidget& window);

} // namespace vesk::hand

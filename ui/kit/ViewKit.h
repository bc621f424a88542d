#pragma once

#include "ui/kit/ElidedLabel.h"
#include "ui/kit/Theme.h"

#include <QFont>
#include <QList>
#include <QPushButton>

#include <functional>

class QBoxLayout;
class QCheckBox;
class QLabel;

/// The six builders that every screen is made with. Sizes are device-independent pixels. A view
/// without a parent belongs to whoever puts it into a container.
namespace vesk {

/// A single line of plain text that ends with an ellipsis where it does not fit.
[[nodiscard]] ElidedLabel* label(
    const QString& text, int size = 13, QFont::Weight weight = QFont::Normal,
    const QColor& color = Theme::text);

/// Plain text over as many lines as it needs, in the muted colour.
[[nodiscard]] QLabel* paragraph(const QString& text, int size = 13);

/// The views in order: below one another from the leading edge, or side by side and centred.
[[nodiscard]] QWidget* stack(const QList<QWidget*>& views, bool vertical = true, int spacing = 12);

/// Puts `view` at the end of what stack() laid out.
void addToStack(QBoxLayout& stack, QWidget* view);

/// Puts `view` into `container`, with the same margin on all four sides.
void pin(QWidget* view, QWidget& container, int inset = 20);

/// A rounded panel around `content`.
[[nodiscard]] QWidget* cardPanel(QWidget* content);

/// A push button that calls `action` while `target` lives.
[[nodiscard]] QPushButton* button(
    const QString& title, const QObject* target, std::function<void()> action,
    bool primary = false);

/// A check box with the title as it is.
[[nodiscard]] QCheckBox* checkBox(const QString& title);

/// What plain buttons and segments are written in.
[[nodiscard]] QFont controlFont();

/// Takes what width is left in a horizontal stack, or what height in a vertical one.
[[nodiscard]] QWidget* flexibleSpace(bool vertical = false);

/// The system's font for texts.
[[nodiscard]] QFont systemFont(int size, QFont::Weight weight);

/// The system's monospaced font.
[[nodiscard]] QFont monospaced(int size, QFont::Weight weight);

/// `title` for a control that would read "&" as the mark of a shortcut.
[[nodiscard]] QString verbatim(const QString& title);

} // namespace vesk

#include "ui/kit/TextView.h"

#include "ui/kit/Accessibility.h"
#include "ui/kit/PlainToolTip.h"

#include <QHelpEvent>

namespace vesk {

TextView::TextView(QWidget* parent) : QWidget(parent) {
    setAccessibleRole(*this, QAccessible::StaticText);
}

void TextView::setText(const QString& text) {
    if (text != text_) {
        text_ = text;
        setAccessibleName(text);
        textChanged();
    }
}

void TextView::setColor(const QColor& color) {
    if (palette().color(QPalette::WindowText) != color) {
        QPalette own = palette();
        own.setColor(QPalette::WindowText, color);
        setPalette(own);
    }
}

bool TextView::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        showPlainToolTip(*static_cast<QHelpEvent*>(event), *this, toolTipText());
        return true;
    }
    return QWidget::event(event);
}

} // namespace vesk

#include "ui/ElidedLabel.h"

#include "ui/PlainToolTip.h"

#include <QHelpEvent>
#include <QPainter>

namespace vesk {

using namespace Qt::StringLiterals;

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString& text) {
    QLabel::setText(text);
    updateToolTip();
}

void ElidedLabel::setNote(const QString& note) {
    if (note_ != note) {
        note_ = note;
        setAccessibleDescription(note);
        updateToolTip();
    }
}

void ElidedLabel::setColor(const QColor& color) {
    if (palette().color(QPalette::WindowText) != color) {
        QPalette own = palette();
        own.setColor(QPalette::WindowText, color);
        setPalette(own);
    }
}

bool ElidedLabel::isElided() const {
    return fontMetrics().horizontalAdvance(text()) > contentsRect().width();
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().horizontalAdvance(u'…'), QLabel::minimumSizeHint().height()};
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        showPlainToolTip(*static_cast<QHelpEvent*>(event), *this);
        return true;
    }
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(
        contentsRect(), static_cast<int>(alignment()) | Qt::TextSingleLine,
        fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()));
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    updateToolTip();
}

void ElidedLabel::updateToolTip() {
    if (!isElided()) {
        setToolTip(note_);
    } else {
        setToolTip(note_.isEmpty() ? text() : text() + u"\n"_s + note_);
    }
}

} // namespace vesk

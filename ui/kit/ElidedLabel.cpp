#include "ui/kit/ElidedLabel.h"

#include <QEvent>
#include <QPainter>

#include <cmath>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// More than any screen is wide; a service may send far longer texts, which take their time.
constexpr qsizetype mostCharacters = 2000;

/// Line breaks and other control characters become blanks.
QString singleLine(const QString& text) {
    QString line = text.left(mostCharacters);
    for (QChar& character : line) {
        if (character.category() == QChar::Other_Control
            || character.category() == QChar::Separator_Line
            || character.category() == QChar::Separator_Paragraph) {
            character = u' ';
        }
    }
    return line;
}

} // namespace

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent) : TextView(parent) {
    shown_.setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setText(text);
}

void ElidedLabel::setNote(const QString& note) {
    if (note_ != note) {
        note_ = note;
        setAccessibleDescription(note);
    }
}

void ElidedLabel::fillWidth() {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QString ElidedLabel::toolTipText() const {
    if (!elided_) {
        return note_;
    }
    return note_.isEmpty() ? text() : text() + u"\n"_s + note_;
}

QSize ElidedLabel::sizeHint() const {
    const qreal width = QFontMetricsF(font()).horizontalAdvance(line_);
    return {static_cast<int>(std::ceil(width)), fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().horizontalAdvance(u'…'), fontMetrics().height()};
}

void ElidedLabel::textChanged() {
    line_ = singleLine(text());
    shape();
    if (sizePolicy().horizontalPolicy() != QSizePolicy::Ignored) {
        updateGeometry();
    }
}

void ElidedLabel::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange) {
        shape();
        updateGeometry();
    }
    TextView::changeEvent(event);
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawStaticText(0, (height() - fontMetrics().height()) / 2, shown_);
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    shape();
    TextView::resizeEvent(event);
}

void ElidedLabel::shape() {
    const QString shown = fontMetrics().elidedText(line_, Qt::ElideRight, width());
    elided_ = text().size() > line_.size() || shown != line_;
    if (shown != shown_.text()) {
        shown_.setText(shown);
        update();
    }
}

} // namespace vesk

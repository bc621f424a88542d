#include "ui/kit/ElidedLabel.h"

#include "ui/kit/PlainToolTip.h"

#include <QHelpEvent>
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

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent)
    : QLabel(text, parent), line_(singleLine(text)) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString& text) {
    line_ = singleLine(text);
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
    return text().size() > line_.size() || elidedLine() != line_;
}

QSize ElidedLabel::sizeHint() const {
    const qreal width = QFontMetricsF(font()).horizontalAdvance(line_);
    return {static_cast<int>(std::ceil(width)), fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().horizontalAdvance(u'…'), fontMetrics().height()};
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
        contentsRect(), static_cast<int>(alignment()) | Qt::TextSingleLine, elidedLine());
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    updateToolTip();
}

QString ElidedLabel::elidedLine() const {
    return fontMetrics().elidedText(line_, Qt::ElideRight, contentsRect().width());
}

void ElidedLabel::updateToolTip() {
    if (!isElided()) {
        setToolTip(note_);
    } else {
        setToolTip(note_.isEmpty() ? text() : text() + u"\n"_s + note_);
    }
}

} // namespace vesk

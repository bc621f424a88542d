#include "ui/kit/ElidedLabel.h"

#include "ui/kit/ReadingOrder.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
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

/// May change where the signs before it stand.
bool mayTurn(QChar sign) {
    const QChar::Direction direction = sign.direction();
    return direction == QChar::DirR || direction == QChar::DirAL || sign.isSurrogate()
           || sign.category() == QChar::Other_Format;
}

/// How many signs at the beginning look alike in both texts.
qsizetype lookAlike(const QString& one, const QString& other) {
    // Ligatures and marks change a sign before them, and none reaches farther than this.
    constexpr qsizetype joined = 3;
    const auto parted = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    if (std::any_of(one.begin(), one.end(), mayTurn)
        || std::any_of(other.begin(), other.end(), mayTurn)) {
        return 0;
    }
    return std::max<qsizetype>(parted.first - one.begin() - joined, 0);
}

} // namespace

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent) : TextView(parent) {
    shown_.setCacheEnabled(true);
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
    if (sizePolicy().horizontalPolicy() == QSizePolicy::Ignored) {
        return minimumSizeHint();
    }
    const qreal width = QFontMetricsF(font()).horizontalAdvance(line_);
    return {static_cast<int>(std::ceil(width)), fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().horizontalAdvance(u'…'), fontMetrics().height()};
}

void ElidedLabel::textChanged() {
    line_ = inReadingOrder(singleLine(text()));
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
    const int top = (height() - fontMetrics().height()) / 2;
    shown_.draw(&painter, QPointF(0, top));
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    shape();
    TextView::resizeEvent(event);
}

void ElidedLabel::shape() {
    const QString before = shown_.text();
    if (line_.isEmpty() && before.isEmpty()) {
        return;
    }
    const qreal ascent = shown_.lineCount() > 0 ? shown_.lineAt(0).ascent() : 0;
    layOut(line_);
    const bool fits = shown_.lineAt(0).horizontalAdvance() <= width();
    if (!fits) {
        layOut(fontMetrics().elidedText(line_, Qt::ElideRight, width()));
    }
    elided_ = text().size() > mostCharacters || !fits;
    if (shown_.text() != before) {
        const QTextLine line = shown_.lineAt(0);
        const qsizetype same = line.ascent() == ascent ? lookAlike(shown_.text(), before) : 0;
        const int from = same > 0 ? static_cast<int>(line.cursorToX(static_cast<int>(same))) : 0;
        update(from, 0, width() - from, height());
    }
}

/// Shapes the text once, for measuring and for every drawing.
void ElidedLabel::layOut(const QString& text) {
    shown_.setText(text);
    shown_.setFont(font());
    shown_.beginLayout();
    shown_.createLine();
    shown_.endLayout();
}

} // namespace vesk

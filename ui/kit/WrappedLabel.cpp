#include "ui/kit/WrappedLabel.h"

#include "ui/kit/ReadingOrder.h"

#include <QPainter>
#include <QResizeEvent>

#include <algorithm>

namespace vesk {

namespace {

constexpr int usualWidth = 240;
constexpr int leastWidth = 60;

} // namespace

WrappedLabel::WrappedLabel(int mostLines, QWidget* parent)
    : TextView(parent), mostLines_(mostLines) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int WrappedLabel::heightForWidth(int width) const {
    if (width == this->width()) {
        return heightOf(lines_);
    }
    QTextLayout layout;
    breakLines(layout, width);
    return heightOf(layout);
}

QSize WrappedLabel::sizeHint() const {
    return {usualWidth, heightForWidth(usualWidth)};
}

QSize WrappedLabel::minimumSizeHint() const {
    return {leastWidth, fontMetrics().lineSpacing()};
}

void WrappedLabel::textChanged() {
    const int height = heightOf(lines_);
    shape();
    if (heightOf(lines_) != height) {
        updateGeometry();
    }
}

void WrappedLabel::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange) {
        shape();
        updateGeometry();
    }
    TextView::changeEvent(event);
}

void WrappedLabel::paintEvent(QPaintEvent* /*event*/) {
    const int whole = lines_.lineCount() - (isShortened() ? 1 : 0);
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    for (int line = 0; line < whole; ++line) {
        lines_.lineAt(line).draw(&painter, {});
    }
    if (isShortened()) {
        const int top = fontMetrics().lineSpacing() * whole;
        painter.drawText(
            QRect(0, top, width(), fontMetrics().lineSpacing()), Qt::AlignLeft | Qt::TextSingleLine,
            lastLine_);
    }
}

void WrappedLabel::resizeEvent(QResizeEvent* event) {
    if (event->size().width() != event->oldSize().width()) {
        shape();
    }
    TextView::resizeEvent(event);
}

int WrappedLabel::breakLines(QTextLayout& layout, int width) const {
    QTextOption option(Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.setFont(font());
    layout.setText(inReadingOrder(text()).replace(u'\n', QChar::LineSeparator));
    int cut = -1;
    layout.beginLayout();
    while (mostLines_ == 0 || layout.lineCount() < mostLines_) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) {
            break;
        }
        line.setLineWidth(width);
        line.setPosition(QPointF(0, (layout.lineCount() - 1) * fontMetrics().lineSpacing()));
        const bool last = layout.lineCount() == mostLines_;
        const auto end = line.textStart() + line.textLength();
        if (last && end < layout.text().size()) {
            cut = line.textStart();
        }
    }
    layout.endLayout();
    return cut;
}

int WrappedLabel::heightOf(const QTextLayout& layout) const {
    return fontMetrics().lineSpacing() * std::max(1, layout.lineCount());
}

void WrappedLabel::shape() {
    cut_ = breakLines(lines_, width());
    lastLine_.clear();
    if (isShortened()) {
        // In one line, of which the toolkit would else measure the part before a break only.
        const QString rest = lines_.text().mid(cut_).replace(QChar::LineSeparator, u' ').trimmed();
        lastLine_ = fontMetrics().elidedText(rest, Qt::ElideRight, width());
    }
    update();
}

} // namespace vesk

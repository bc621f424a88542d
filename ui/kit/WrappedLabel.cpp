#include "ui/kit/WrappedLabel.h"

#include "ui/kit/PlainToolTip.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int usualWidth = 240;
constexpr int leastWidth = 60;

} // namespace

WrappedLabel::WrappedLabel(int mostLines, QWidget* parent) : QLabel(parent), mostLines_(mostLines) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
}

void WrappedLabel::setText(const QString& text) {
    if (text != this->text()) {
        QLabel::setText(text);
        updateGeometry();
        updateToolTip();
    }
}

void WrappedLabel::setColor(const QColor& color) {
    QPalette own = palette();
    own.setColor(QPalette::WindowText, color);
    setPalette(own);
}

bool WrappedLabel::isShortened() const {
    QTextLayout layout;
    return breakLines(layout, width()) >= 0;
}

int WrappedLabel::heightForWidth(int width) const {
    QTextLayout layout;
    breakLines(layout, width);
    return fontMetrics().lineSpacing() * qMax(1, layout.lineCount());
}

QSize WrappedLabel::sizeHint() const {
    return {usualWidth, heightForWidth(usualWidth)};
}

QSize WrappedLabel::minimumSizeHint() const {
    return {leastWidth, fontMetrics().lineSpacing()};
}

bool WrappedLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        showPlainToolTip(*static_cast<QHelpEvent*>(event), *this);
        return true;
    }
    return QLabel::event(event);
}

void WrappedLabel::paintEvent(QPaintEvent* /*event*/) {
    QTextLayout layout;
    const int cut = breakLines(layout, width());
    const int whole = layout.lineCount() - (cut < 0 ? 0 : 1);
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    for (int line = 0; line < whole; ++line) {
        layout.lineAt(line).draw(&painter, {});
    }
    if (cut >= 0) {
        const int top = fontMetrics().lineSpacing() * whole;
        painter.drawText(
            QRect(0, top, width(), fontMetrics().lineSpacing()), Qt::AlignLeft | Qt::TextSingleLine,
            fontMetrics().elidedText(layout.text().mid(cut), Qt::ElideRight, width()));
    }
}

void WrappedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    updateToolTip();
}

int WrappedLabel::breakLines(QTextLayout& layout, int width) const {
    QTextOption option(Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.setFont(font());
    layout.setText(text().replace(u'\n', QChar::LineSeparator));
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

void WrappedLabel::updateToolTip() {
    setToolTip(isShortened() ? text() : QString());
}

} // namespace vesk

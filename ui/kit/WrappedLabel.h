#pragma once

#include "ui/kit/TextView.h"

#include <QTextLayout>

namespace vesk {

/// Plain text over several lines. A word that is longer than a line is broken; where the lines are
/// limited the last one ends with an ellipsis, and the tool tip tells the whole text.
class WrappedLabel final : public TextView {
    Q_OBJECT

public:
    /// `mostLines`: 0 for as many as the text needs.
    explicit WrappedLabel(int mostLines = 0, QWidget* parent = nullptr);

    /// Whether more text follows the last line.
    [[nodiscard]] bool isShortened() const noexcept { return cut_ >= 0; }

    [[nodiscard]] QString toolTipText() const override {
        return isShortened() ? text() : QString();
    }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void textChanged() override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// Breaks the text into lines; gives where the last of them starts if more text
    /// follows it, else -1.
    int breakLines(QTextLayout& layout, int width) const;
    [[nodiscard]] int heightOf(const QTextLayout& layout) const;
    void shape();

    int mostLines_;
    QTextLayout lines_; // as they are drawn
    int cut_ = -1;      // where the last line starts, when it is shortened
    QString lastLine_;  // what is drawn of that
};

} // namespace vesk

#pragma once

#include <QLabel>

class QTextLayout;

namespace vesk {

/// Plain text over several lines. A word that is longer than a line is broken; where the lines are
/// limited the last one ends with an ellipsis, and the tool tip tells the whole text.
class WrappedLabel final : public QLabel {
    Q_OBJECT

public:
    /// `mostLines`: 0 for as many as the text needs.
    explicit WrappedLabel(int mostLines = 0, QWidget* parent = nullptr);

    /// Use this one, which keeps the tool tip right, and not that of the base.
    void setText(const QString& text);
    void setColor(const QColor& color);

    /// Whether more text follows the last line.
    [[nodiscard]] bool isShortened() const;

    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// Breaks the text into lines; gives where the last of them starts if more text
    /// follows it, else -1.
    int breakLines(QTextLayout& layout, int width) const;
    void updateToolTip();

    int mostLines_;
};

} // namespace vesk

#pragma once

#include <QLabel>

namespace vesk {

/// A single line of plain text that ends with an ellipsis where it does not fit. Its accessible
/// name is always the whole text; so is its tool tip while it is elided.
class ElidedLabel final : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& text, QWidget* parent = nullptr);

    /// Use these two, which keep the tool tip right, and not those of the base.
    void setText(const QString& text);
    /// What the tool tip and the accessible description say besides the text.
    void setNote(const QString& note);

    void setColor(const QColor& color);

    [[nodiscard]] bool isElided() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] QString elidedLine() const;
    void updateToolTip();

    QString line_; // what there is to draw of the text
    QString note_;
};

} // namespace vesk

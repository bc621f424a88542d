#pragma once

#include "ui/kit/TextView.h"

#include <QTextLayout>

namespace vesk {

/// A single line of plain text that ends with an ellipsis where it does not fit. While it does not,
/// its tool tip tells the whole text.
class ElidedLabel final : public TextView {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& text, QWidget* parent = nullptr);

    /// What the tool tip and the accessible description say besides the text.
    void setNote(const QString& note);

    /// Takes whatever width there is instead of asking for that of its text: another text then
    /// leaves the layout around it alone.
    void fillWidth();

    [[nodiscard]] bool isElided() const noexcept { return elided_; }

    [[nodiscard]] QString toolTipText() const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void textChanged() override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void shape();
    void layOut(const QString& text);

    QString line_;      // what there is to draw of the text
    QTextLayout shown_; // what is drawn of it
    bool elided_ = false;
    QString note_;
};

} // namespace vesk

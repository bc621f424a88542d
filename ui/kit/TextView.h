#pragma once

#include <QWidget>

namespace vesk {

/// A widget that stands for a text: a label to assistive technology, which reads the whole of it
/// whatever is drawn. The text is plain; setting an equal one does nothing.
class TextView : public QWidget {
    Q_OBJECT

public:
    [[nodiscard]] const QString& text() const noexcept { return text_; }
    void setText(const QString& text);

    void setColor(const QColor& color);

    /// What the tool tip says now; empty for none.
    [[nodiscard]] virtual QString toolTipText() const = 0;

protected:
    explicit TextView(QWidget* parent);

    virtual void textChanged() = 0;

    bool event(QEvent* event) override;

private:
    QString text_;
};

} // namespace vesk

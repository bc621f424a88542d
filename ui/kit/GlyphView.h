#pragma once

#include <QColor>
#include <QWidget>

namespace vesk {

/// One of our drawings as a view of a fixed size.
class GlyphView final : public QWidget {
    Q_OBJECT

public:
    /// `size`: edge in device-independent pixels; `description`: what assistive technology says.
    GlyphView(
        QString name, int size, const QColor& color, const QString& description,
        QWidget* parent = nullptr);

    [[nodiscard]] const QString& name() const noexcept { return name_; }
    void setName(const QString& name);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString name_;
    QColor color_;
};

} // namespace vesk

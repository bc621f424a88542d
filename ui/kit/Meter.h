#pragma once

#include <QPointer>
#include <QWidget>

namespace vesk {

/// A slim determinate bar from 0 (empty) to 1 (full). Assistive technology reads its value.
class Meter final : public QWidget {
    Q_OBJECT

public:
    explicit Meter(QWidget* parent = nullptr);

    [[nodiscard]] double value() const noexcept { return value_; }

    /// Limited to what lies between 0 and 1.
    void setValue(double value);

    /// Whether the bar stands for something under way, which gives it the accent colour.
    void setLive(bool live);

    /// The view that tells in words what the meter shows.
    void setLabel(QWidget* label) { label_ = label; }
    [[nodiscard]] QWidget* label() const noexcept { return label_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double value_ = 0;
    bool live_ = false;
    QPointer<QWidget> label_;
};

} // namespace vesk

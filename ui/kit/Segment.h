#pragma once

#include <QRadioButton>

namespace vesk {

/// One part of a segmented control.
class Segment final : public QRadioButton {
    Q_OBJECT

public:
    explicit Segment(const QString& title, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

signals:
    /// A person chose what was chosen already.
    void chosenAgain();

protected:
    [[nodiscard]] bool hitButton(const QPoint& position) const override;
    void nextCheckState() override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool changedByClick_ = false;
};

} // namespace vesk

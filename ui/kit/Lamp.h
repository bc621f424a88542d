#pragma once

#include "ui/texts/Face.h"

#include <QLabel>

namespace vesk {

/// A small light in the colour of the connection; its tool tip and accessible name are the
/// connection's line.
class Lamp final : public QLabel {
    Q_OBJECT

public:
    explicit Lamp(QWidget* parent = nullptr);

    void show(const ConnectionFace& connection);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    Tone tone_ = Tone::muted;
};

} // namespace vesk

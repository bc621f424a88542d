#pragma once

#include "ui/kit/TextView.h"
#include "ui/texts/Face.h"

namespace vesk {

/// A small light in the colour of the connection; its tool tip and accessible name are the
/// connection's line, which is its text.
class Lamp final : public TextView {
    Q_OBJECT

public:
    explicit Lamp(QWidget* parent = nullptr);

    void setConnection(const ConnectionFace& connection);

    [[nodiscard]] QString toolTipText() const override { return text(); }

protected:
    void textChanged() override {}
    void paintEvent(QPaintEvent* event) override;

private:
    Tone tone_ = Tone::muted;
};

} // namespace vesk

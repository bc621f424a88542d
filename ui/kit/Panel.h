#pragma once

#include <QWidget>

namespace vesk {

/// A rounded box in the panel colour with a thin border.
class Panel : public QWidget {
    Q_OBJECT

public:
    /// `radius`: of the corners, in device-independent pixels.
    explicit Panel(int radius, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int radius_;
};

} // namespace vesk

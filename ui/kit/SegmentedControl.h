#pragma once

#include "ui/kit/KeyboardKeeper.h"

#include <QStringList>
#include <QWidget>

namespace vesk {

class Segment;

/// One choice out of a few, side by side. To keyboard and assistive technology it is a group of
/// radio buttons.
class SegmentedControl final : public QWidget {
    Q_OBJECT

public:
    /// `name`: what assistive technology calls the group. The first segment is selected.
    SegmentedControl(const QString& name, const QStringList& titles, QWidget* parent = nullptr);

    [[nodiscard]] int selectedIndex() const;

    /// Selects without `picked()`.
    void select(int index);

    /// Enables or disables. The keyboard comes back to a control that had it when it was disabled,
    /// unless it went elsewhere meanwhile.
    void setAvailable(bool available);

    /// Gives the keyboard to the selected segment.
    void takeKeyboard();

signals:
    /// A person chose a segment, by mouse, keyboard or assistive technology; the one that was
    /// selected already, perhaps.
    void picked(int index);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QList<Segment*> segments_;
    bool selecting_ = false;
    KeyboardKeeper keyboard_;
};

} // namespace vesk

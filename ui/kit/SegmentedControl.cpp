#include "ui/kit/SegmentedControl.h"

#include "ui/kit/Accessibility.h"
#include "ui/kit/Segment.h"
#include "ui/kit/Theme.h"
#include "ui/kit/ViewKit.h"

#include <QBoxLayout>
#include <QPainter>
#include <QScopedValueRollback>

namespace vesk {

namespace {

constexpr int rim = 2;
constexpr qreal radius = 7;

} // namespace

SegmentedControl::SegmentedControl(const QString& name, const QStringList& titles, QWidget* parent)
    : QWidget(parent) {
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(rim, rim, rim, rim);
    row->setSpacing(rim);
    for (const QString& title : titles) {
        auto* segment = new Segment(verbatim(title), this);
        segment->setFont(controlFont());
        const auto index = static_cast<int>(segments_.size());
        segment->setFocusPolicy(Qt::ClickFocus);
        // Not clicked(): assistive technology checks a radio button without a click.
        connect(segment, &Segment::toggled, this, [this, segment, index](bool on) {
            // The tab key comes to the selected one only; the arrows go on from there.
            segment->setFocusPolicy(on ? Qt::StrongFocus : Qt::ClickFocus);
            if (on && isAncestorOf(window()->focusWidget())) {
                segment->setFocus();
            }
            if (on && !selecting_) {
                emit picked(index);
            }
        });
        connect(segment, &Segment::chosenAgain, this, [this, index] { emit picked(index); });
        row->addWidget(segment);
        segments_.append(segment);
    }
    select(0);
}

int SegmentedControl::selectedIndex() const {
    for (qsizetype index = 0; index < segments_.size(); ++index) {
        if (segments_.at(index)->isChecked()) {
            return static_cast<int>(index);
        }
    }
    return -1;
}

void SegmentedControl::select(int index) {
    const QScopedValueRollback byProgram(selecting_, true);
    segments_.at(index)->setChecked(true);
}

void SegmentedControl::setAvailable(bool available) {
    if (keyboard_.setEnabled(*this, available)) {
        takeKeyboard();
    }
}

void SegmentedControl::takeKeyboard() {
    segments_.at(selectedIndex())->setFocus();
}

void SegmentedControl::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Theme::line, 1));
    painter.setBrush(Theme::background);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

} // namespace vesk

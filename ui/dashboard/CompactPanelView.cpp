#include "ui/dashboard/CompactPanelView.h"

#include "ui/kit/GlyphView.h"
#include "ui/kit/Lamp.h"
#include "ui/kit/Meter.h"
#include "ui/kit/Panel.h"
#include "ui/kit/ViewKit.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QPushButton>
#include <QSignalBlocker>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int smallText = 11;

void showState(QCheckBox& box, const ToggleFace& face) {
    const QSignalBlocker byProgram(box);
    if (box.checkState() != face.state) {
        box.setCheckState(face.state);
    }
    // A person switches between on and off only.
    box.setTristate(face.state == Qt::PartiallyChecked);
}

/// Rack, devices and bays are read in columns.
ElidedLabel* rackLine() {
    auto* line = new ElidedLabel(QString());
    line->setFont(monospaced(smallText, QFont::Medium));
    line->setColor(Theme::muted);
    line->fillWidth();
    return line;
}

} // namespace

CompactPanelView::CompactPanelView(QWidget* parent) : QWidget(parent) {
    QWidget* rackBox = makeRackBox();
    QWidget* root = stack({makeHeader(), makeStatusBlock(), rackBox, makeControls()}, true, 10);
    // What a taller window brings goes to the bays.
    static_cast<QBoxLayout*>(root->layout())->setStretchFactor(rackBox, 1);
    pin(root, *this, 0);
    show(compactPanel(Dashboard(), ServiceFacts()));
}

void CompactPanelView::show(const CompactPanel& panel) {
    lamp_->setConnection(panel.connection);
    compactStatus_->setText(panel.compactStatus);
    compactStatus_->setNote(panel.statusDetail);
    compactRack_->setText(panel.compactRack);
    compactDevices_->setText(panel.compactDevices);
    compactSummary_->setText(panel.compactSummary);
    for (size_t bay = 0; bay < CompactPanel::bays; ++bay) {
        const CompactRow& row = panel.compactRows.at(bay);
        compactRows_.at(bay)->setText(row.text);
        compactRows_.at(bay)->setColor(row.live ? Theme::text : Theme::muted);
        compactMeters_.at(bay)->setValue(panel.compactMeters.at(bay));
        compactMeters_.at(bay)->setLive(row.live);
    }
    compactStart_->setText(verbatim(panel.compactStart.title));
    setAvailable(*compactStart_, panel.compactStart.enabled);
    showState(*compactToggle_, panel.compactToggle);
    setAvailable(*compactToggle_, panel.compactToggle.enabled);
}

void CompactPanelView::setAvailable(QWidget& control, bool available) {
    if (keyboard_.setEnabled(control, available)) {
        control.setFocus();
    }
}

QWidget* CompactPanelView::makeHeader() {
    auto* mark = new GlyphView(u"mark"_s, 24, Theme::accent, u"Halvex Vesk"_s);
    auto* title =
        label(u"HALVEX / CORVALA INTELLIGENCE RACK"_s, smallText, QFont::Bold, Theme::accent);
    auto* settings = button(u"Settings"_s, this, [this] { emit settingsPressed(); });
    return stack({mark, title, flexibleSpace(), settings}, false);
}

QWidget* CompactPanelView::makeStatusBlock() {
    lamp_ = new Lamp;
    compactStatus_ = label(QString(), 17, QFont::Bold);
    compactRack_ = rackLine();
    compactDevices_ = rackLine();
    compactSummary_ = label(QString(), smallText, QFont::Normal, Theme::muted);
    // Texts that change all day must not have the whole window laid out each time.
    compactStatus_->fillWidth();
    compactSummary_->fillWidth();
    auto* headline = stack({lamp_, compactStatus_}, false, 8);
    headline->layout()->setAlignment(compactStatus_, Qt::Alignment());
    return cardPanel(stack({headline, compactRack_, compactDevices_, compactSummary_}, true, 5));
}

QWidget* CompactPanelView::makeRackBox() {
    QList<QWidget*> cells;
    for (size_t bay = 0; bay < CompactPanel::bays; ++bay) {
        auto* row = rackLine();
        auto* meter = new Meter;
        meter->setAccessibleName(bayName(static_cast<int>(bay) + 1));
        meter->setLabel(row);
        compactRows_.at(bay) = row;
        compactMeters_.at(bay) = meter;
        auto* cell = stack({row, meter}, true, 5);
        // In a tall window the pairs move apart, not a line from its meter.
        cell->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        cells.append(cell);
    }
    auto* box = new Panel(8);
    pin(stack(cells, true, 10), *box, 12);
    return box;
}

QWidget* CompactPanelView::makeControls() {
    compactStart_ = button(
        QString(), this, [this] { emit startPressed(); }, true);
    compactStart_->setObjectName(u"start"_s);
    compactToggle_ = checkBox(u"Detailed analysis"_s);
    // Not clicked(): assistive technology switches a check box without a click.
    connect(compactToggle_, &QCheckBox::toggled, this, &CompactPanelView::toggleChanged);
    auto* setup = button(u"Setup…"_s, this, [this] { emit setupPressed(); });
    return stack({compactStart_, compactToggle_, flexibleSpace(), setup}, false);
}

} // namespace vesk

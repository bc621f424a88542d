#include "ui/settings/PerformanceSettings.h"

#include "ui/kit/SegmentedControl.h"
#include "ui/kit/Sheet.h"
#include "ui/kit/ViewKit.h"
#include "ui/settings/SettingsController.h"
#include "ui/texts/SettingsPresentation.h"

#include <QLabel>

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

PerformanceSettings::PerformanceSettings(SettingsController& control, QWidget* parentWindow)
    : control_(control),
      window_(new Sheet(u"Corvala processing settings"_s, {570, 335}, parentWindow)),
      mode_(new SegmentedControl(
          u"Processing mode"_s, {u"Automatic"_s, u"Cool & quiet"_s, u"Faster when idle"_s})),
      thermal_(label(QString())),
      performance_(label(QString())),
      explanation_(paragraph(
          u"Temperature protection stays active in every mode. Automatic adjusts to Mac activity; "
          "quiet uses one gentle lane; faster uses more spare capacity only while the Mac is cool "
          "and idle."_s)),
      done_(button(
          u"Done"_s, this, [this] { close(); }, true)) {
    thermal_->fillWidth();
    performance_->fillWidth();
    auto* choice = stack({label(u"Processing settings"_s, 23, QFont::DemiBold), mode_}, true, 17);
    auto* report = stack({thermal_, performance_}, true, 10);
    auto* actions = stack({flexibleSpace(true), stack({flexibleSpace(), done_}, false)}, true, 0);
    pin(cardPanel(stack({choice, report, explanation_, actions}, true, 17)), *window_, 24);
    done_->setDefault(true);
    connect(mode_, &SegmentedControl::picked, this, &PerformanceSettings::changeMode);
    connect(window_, &Sheet::dismissed, this, &PerformanceSettings::close);
    refresh();
}

PerformanceSettings::~PerformanceSettings() {
    delete window_;
}

void PerformanceSettings::open() {
    window_->open();
    refresh();
    if (mode_->isEnabled()) {
        mode_->takeKeyboard();
    } else {
        done_->setFocus();
    }
}

void PerformanceSettings::refresh() {
    const SettingsPresentation next(
        control_.lastHealth(), {.online = control_.online(), .changing = changing_});
    if (next.mode) {
        mode_->select(*next.mode);
    }
    mode_->setAvailable(next.enabled);
    thermal_->setText(next.thermal);
    performance_->setText(next.performance);
}

void PerformanceSettings::close() {
    window_->end();
}

QDialog* PerformanceSettings::window() const {
    return window_;
}

void PerformanceSettings::changeMode() {
    if (changing_) {
        return;
    }
    if (!control_.online()) {
        refresh();
        return;
    }
    const auto last = static_cast<int>(performanceModes.size()) - 1;
    const auto index = static_cast<size_t>(std::clamp(mode_->selectedIndex(), 0, last));
    changing_ = true;
    refresh();
    control_.setPerformanceMode(
        performanceModes.at(index), [settings = QPointer(this)](bool confirmed) {
            if (settings) {
                settings->modeChanged(confirmed);
            }
        });
}

void PerformanceSettings::modeChanged(bool confirmed) {
    changing_ = false;
    refresh();
    if (!confirmed) {
        control_.showError(u"Could not save processing mode. Please try again."_s);
    }
}

} // namespace vesk

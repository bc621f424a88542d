#include "ui/texts/SettingsPresentation.h"

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

const std::array<QString, 3> performanceModes{u"automatic"_s, u"quiet"_s, u"faster"_s};

namespace {

int modeIndex(const QString& name) {
    const auto* const found = std::find(performanceModes.begin(), performanceModes.end(), name);
    return found == performanceModes.end() ? 0 : static_cast<int>(found - performanceModes.begin());
}

QString performanceText(const ActivityPolicy& policy, bool online) {
    constexpr qint64 usualCapacity = 3;
    auto reason = policy.reason.value_or(u"Waiting for processing service"_s);
    if (!online) {
        return reason;
    }
    return u"Using "_s + QString::number(policy.effectiveDutyPercent.value_or(0)) + u"% duty · "_s
           + QString::number(policy.effectiveWorkers.value_or(0)) + u"/"_s
           + QString::number(policy.configuredWorkers.value_or(usualCapacity)) + u" lanes · "_s
           + reason;
}

} // namespace

SettingsPresentation::SettingsPresentation(const HealthDocument& lastHealth, SettingsState state)
    : enabled(state.online && !state.changing) {
    const ActivityPolicy& policy = lastHealth.activityPolicy;
    if (!state.changing) {
        mode = modeIndex(policy.performanceMode.value_or(QString()));
    }
    thermal = u"Mac temperature: "_s + policy.thermalState.value_or(u"Checking"_s)
              + u" · protection "_s + (state.online ? u"on"_s : u"waiting for service"_s);
    performance = performanceText(policy, state.online);
}

} // namespace vesk

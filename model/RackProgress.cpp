#include "model/RackProgress.h"

#include "model/Checked.h"

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

// Positions of the phases that report no progress: far enough apart that a change is seen.
constexpr double queuedPosition = 0.10;
constexpr double loadingPosition = 0.24;
constexpr double returningPosition = 0.96;

double coolingFraction(Cooldown cooldown) {
    if (cooldown.whole <= 0) {
        return 0.08;
    }
    return std::max(0.04, std::min(0.96, 1 - cooldown.left / cooldown.whole));
}

QString coolingLabel(Cooldown cooldown) {
    if (cooldown.left <= 0) {
        return u"cooling"_s;
    }
    return u"cooling "_s + QString::number(wholeSecondsUp(cooldown.left)) + u"s"_s;
}

/// Starts at 34 %, gains 56 points in three minutes and then stays at 92 % until the service says
/// more.
double estimatedFraction(double elapsedSeconds) {
    constexpr double threeMinutes = 180;
    return elapsedSeconds < threeMinutes ? elapsedSeconds / threeMinutes * 0.56 + 0.34 : 0.92;
}

} // namespace

RackProgress::RackProgress(const SlotRecord& slot, Cooldown cooldown) {
    const auto current = slot.progressCurrent;
    const auto total = slot.progressTotal;
    if (current && total && *total > 0 && *current > 0 && *current <= *total) {
        value = static_cast<double>(*current) / static_cast<double>(*total);
        label = u"frame "_s + QString::number(*current) + u"/"_s + QString::number(*total);
        return;
    }
    if (!isActive(slot)) {
        label = u"ready"_s;
        return;
    }

    const QString phase = slot.phase.value_or(QString());
    if (phase == u"cooling") {
        value = coolingFraction(cooldown);
        label = coolingLabel(cooldown);
        return;
    }
    exact = false;
    if (phase == u"waiting_model" || phase == u"queued") {
        value = queuedPosition;
        label = u"queued"_s;
    } else if (phase == u"loading_model") {
        value = loadingPosition;
        label = u"loading model"_s;
    } else if (phase == u"returning") {
        value = returningPosition;
        label = u"returning result"_s;
    } else {
        const auto elapsed = slot.elapsedMs.value_or(0);
        value = estimatedFraction(static_cast<double>(elapsed) / 1000);
        label = u"~"_s + QString::number(static_cast<qint64>(value * 100)) + u"% job estimate"_s;
    }
}

} // namespace vesk

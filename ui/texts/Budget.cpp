#include "ui/texts/Budget.h"

#include "model/Checked.h"

namespace vesk {

using namespace Qt::StringLiterals;

Budget::Budget(const HealthDocument& document) {
    constexpr qint64 usualDuty = 40;
    constexpr auto counts = "the service's session counts";
    const ActivityPolicy& policy = document.activityPolicy;
    const auto documentDuty = document.dutyPercent.value_or(usualDuty);
    duty = policy.effectiveDutyPercent.value_or(documentDuty);
    rackDuty =
        policy.effectiveDutyPercent.value_or(policy.configuredDutyPercent.value_or(documentDuty));
    lanes = policy.effectiveWorkers.value_or(document.workers.value_or(0));
    configuredLanes = policy.configuredWorkers.value_or(document.configuredWorkers.value_or(0));
    reason = policy.reason.value_or(u"Adaptive processing"_s);
    cooldown = document.cooldownSeconds.value_or(0);
    completed = checkedCount(document.bays.completed(), counts);
    failed = checkedCount(document.bays.failed(), counts);
}

QString Budget::lanesText(qint64 percentage) const {
    return QString::number(percentage) + u"% · "_s + QString::number(lanes) + u"/"_s
           + QString::number(configuredLanes) + u" lanes · "_s + reason;
}

} // namespace vesk

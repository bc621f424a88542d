#include "ui/texts/Budget.h"

#include "model/Checked.h"
#include "model/LenientReader.h"

namespace vesk {

using namespace Qt::StringLiterals;

Budget::Budget(const HealthDocument& document) {
    using lenient::integer;
    constexpr qint64 usualDuty = 40;
    const auto policy = lenient::dictionary(document, u"activity_policy").value_or(QJsonObject());
    const auto documentDuty = integer(document, u"duty_percent").value_or(usualDuty);
    const auto effectiveDuty = integer(policy, u"effective_duty_percent");
    duty = effectiveDuty.value_or(documentDuty);
    rackDuty =
        effectiveDuty.value_or(integer(policy, u"configured_duty_percent").value_or(documentDuty));
    lanes =
        integer(policy, u"effective_workers").value_or(integer(document, u"workers").value_or(0));
    configuredLanes = integer(policy, u"configured_workers")
                          .value_or(integer(document, u"configured_workers").value_or(0));
    reason = lenient::string(policy, u"reason").value_or(u"Adaptive processing"_s);
    cooldown = lenient::number(document, u"cooldown_seconds").value_or(0);
    for (const SlotRecord& slot : slotRecords(document)) {
        completed = checkedSum(completed, integer(slot, u"completed").value_or(0));
        failed = checkedSum(failed, integer(slot, u"failed").value_or(0));
    }
}

QString Budget::lanesText(qint64 percentage) const {
    return QString::number(percentage) + u"% · "_s + QString::number(lanes) + u"/"_s
           + QString::number(configuredLanes) + u" lanes · "_s + reason;
}

} // namespace vesk

#include "service/HealthDocument.h"

#include "model/LenientReader.h"

#include <algorithm>

namespace vesk {

std::optional<ConfirmedHealth> confirmed(const HealthDocument& document) {
    const auto deep = lenient::boolean(document, u"deep_scan_enabled");
    return deep ? std::optional(ConfirmedHealth{document, *deep}) : std::nullopt;
}

QList<SlotRecord> slotRecords(const HealthDocument& document) {
    return lenient::dictionaries(document, u"slots").value_or(QList<SlotRecord>());
}

qsizetype activeCount(const QList<SlotRecord>& records) {
    return std::count_if(records.begin(), records.end(), isActive);
}

bool reportsBackendReady(const QJsonObject& diagnostics) {
    const auto backend = lenient::dictionary(diagnostics, u"backend").value_or(QJsonObject());
    return lenient::boolean(backend, u"reachable").value_or(false)
           && lenient::boolean(backend, u"model_ready").value_or(false);
}

} // namespace vesk

#pragma once

#include <QJsonObject>

namespace vesk {

/// One processing bay as the service describes it; read through the lenient readers only.
using SlotRecord = QJsonObject;

/// Whether the bay holds a job: its `state` is "busy" or "waiting".
[[nodiscard]] bool isActive(const SlotRecord& slot);

} // namespace vesk

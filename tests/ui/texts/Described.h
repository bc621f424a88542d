#pragma once

#include "ui/texts/CompactPanel.h"

#include <QStringList>

namespace vesk {

/// Every field with its name, so that a comparison that fails says which one differs.
[[nodiscard]] QStringList described(const Dashboard& dashboard);
[[nodiscard]] QStringList described(const CompactPanel& panel);

/// A dashboard in which every field is set to something that no function sets it to.
[[nodiscard]] Dashboard markedDashboard();

} // namespace vesk

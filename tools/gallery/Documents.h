#pragma once

#include "model/HealthDocument.h"

/// Health documents as a service in different states would answer them.
namespace vesk::documents {

[[nodiscard]] HealthDocument idle();
/// Three bays at work.
[[nodiscard]] HealthDocument live();
[[nodiscard]] HealthDocument cooling();
/// Names and reasons as long as they come.
[[nodiscard]] HealthDocument longTexts();
/// Names that are written from right to left, and with pictures.
[[nodiscard]] HealthDocument foreignTexts();
/// At rest in the given performance mode.
[[nodiscard]] HealthDocument inMode(const QString& mode);

} // namespace vesk::documents

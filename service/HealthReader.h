#pragma once

#include "model/HealthDocument.h"

#include <QByteArray>

#include <optional>

/// The service's documents as values, in the order of docs/protocol.md.
namespace vesk {

/// What the bytes of a health answer say; nothing where it is no JSON object with a boolean
/// `deep_scan_enabled`. All else in it may be missing or of another type and stays empty then.
[[nodiscard]] std::optional<ConfirmedHealth> readHealth(const QByteArray& body);

/// Whether the bytes of a diagnostics answer say that photo analysis can work; nothing where it is
/// no JSON object.
[[nodiscard]] std::optional<bool> readBackendReady(const QByteArray& body);

} // namespace vesk

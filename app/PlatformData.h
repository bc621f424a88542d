#pragma once

#include <QByteArray>
#include <QVariantMap>

namespace vesk {

/// The proof of the user's wish in the platform data of a call of org.freedesktop.Application
/// (Desktop Entry Specification 1.5, "D-Bus Activation"): "activation-token", else
/// "desktop-startup-id", each as text or as bytes. Empty where there is none.
[[nodiscard]] QByteArray activationToken(const QVariantMap& platformData);

/// The platform data that passes on what the launcher put into the environment of this process.
[[nodiscard]] QVariantMap platformDataOfEnvironment();

} // namespace vesk

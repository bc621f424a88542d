#pragma once

#include "tests/simulation/world/Dice.h"

#include <QJsonObject>

namespace vesk {

/// A health document of a working service, without what a person sets there.
[[nodiscard]] QJsonObject serviceDocument(Dice& dice);

/// What it says of the photo engine.
[[nodiscard]] QJsonObject serviceDiagnostics(Dice& dice);

/// The document with one value somewhere in it left out or of a wrong type; the one that makes it a
/// health document at all is spared.
[[nodiscard]] QJsonObject withWrongType(QJsonObject document, Dice& dice);

} // namespace vesk

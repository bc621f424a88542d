#pragma once

#include <QString>
#include <QStringList>

namespace vesk {

/// Writes a unit for every launch agent in the folder `agents` to the folder `units`, and has those
/// that start when loaded wanted by the default target. Returns a line for each file that could not
/// be used; the others are not held up by it.
[[nodiscard]] QStringList generateAgentUnits(const QString& agents, const QString& units);

} // namespace vesk

#pragma once

#include <QString>
#include <QStringList>

namespace vesk {

struct GeneratorFolders {
    QString agents; ///< where the property lists are
    QString units;  ///< where the units go
};

/// Writes a unit for every launch agent and has those that start when loaded wanted by the default
/// target. Returns a line for each file that could not be used; the others are not held up by it.
[[nodiscard]] QStringList generateAgentUnits(const GeneratorFolders& folders);

} // namespace vesk

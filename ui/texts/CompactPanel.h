#pragma once

#include "ui/texts/Dashboard.h"

#include <array>

namespace vesk {

/// One bay's line on the rack panel.
struct CompactRow {
    QString text;
    bool live = false; ///< the bay holds a job

    bool operator==(const CompactRow&) const = default;
};

/// Everything the rack panel shows, as a value.
struct CompactPanel {
    static constexpr int bays = Bays::shown;

    QString compactStatus;
    QString statusDetail;      ///< told with the headline, not beside it
    ConnectionFace connection; ///< told by the lamp beside the headline
    QString compactRack;
    QString compactDevices;
    QString compactSummary;
    std::array<CompactRow, bays> compactRows;
    std::array<double, bays> compactMeters{}; ///< 0 is empty, 1 is full
    ButtonFace compactStart;
    ToggleFace compactToggle;

    bool operator==(const CompactPanel&) const = default;
};

/// What the bay with that number is called.
[[nodiscard]] QString bayName(int bay);

/// What the panel says now. Offline, the rack line keeps the last document's names.
[[nodiscard]] CompactPanel compactPanel(const Dashboard& dashboard, const ServiceFacts& facts);

} // namespace vesk

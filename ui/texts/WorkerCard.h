#pragma once

#include "model/SlotRecord.h"

#include <QString>

namespace vesk {

/// Every text of one bay's card, as a value.
struct WorkerCard {
    /// Before the first update.
    WorkerCard();

    /// `online`: the service answers; `accepting`: it takes deep jobs. Never fails.
    WorkerCard(const SlotRecord& slot, bool online, bool accepting);

    QString number;
    QString badge;
    bool badgeLive = false; ///< the badge is in the accent colour, else muted
    QString symbol;         ///< name of the drawing
    QString title;
    QString detail;
    QString engine;
    QString elapsed;
    QString completed;
    QString failed;

    bool operator==(const WorkerCard&) const = default;
};

} // namespace vesk

#pragma once

#include "model/ServiceState.h"
#include "model/SlotRecord.h"

#include <QString>

namespace vesk {

/// Every text of one bay's card, as a value.
struct WorkerCard {
    /// Before the first update.
    WorkerCard();

    /// Never fails.
    WorkerCard(const SlotRecord& slot, ServiceState service);

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

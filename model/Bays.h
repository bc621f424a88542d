#pragma once

#include "model/SlotRecord.h"

#include <QList>

#include <array>
#include <optional>

namespace vesk {

/// The bays in the service's order, with what is told of all of them, counted once.
class Bays {
public:
    /// Those with the numbers 1 to this one are shown one by one.
    static constexpr int shown = 3;

    Bays() = default;
    explicit Bays(QList<SlotRecord> records);

    [[nodiscard]] const QList<SlotRecord>& records() const noexcept { return records_; }

    /// The first record with that number, from 1 to `shown`; an empty one where there is none.
    [[nodiscard]] const SlotRecord& numbered(int number) const;

    /// How many bays hold a job.
    [[nodiscard]] qsizetype active() const noexcept { return active_; }

    /// Jobs returned, over all bays; empty where the sum fits no 64-bit integer.
    [[nodiscard]] std::optional<qint64> completed() const noexcept { return completed_; }

    /// The same for jobs that failed.
    [[nodiscard]] std::optional<qint64> failed() const noexcept { return failed_; }

    /// All else follows from the records.
    bool operator==(const Bays& other) const { return records_ == other.records_; }

private:
    QList<SlotRecord> records_;
    std::array<SlotRecord, shown> numbered_;
    qsizetype active_ = 0;
    std::optional<qint64> completed_ = 0;
    std::optional<qint64> failed_ = 0;
};

} // namespace vesk

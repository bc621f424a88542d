#pragma once

#include "model/SlotRecord.h"

#include <array>
#include <optional>

namespace vesk {

/// What is told of the bays: some one by one, and of all of them what they come to.
class Bays {
public:
    /// Those with the numbers 1 to this one are shown one by one.
    static constexpr int shown = 3;

    /// One more.
    void append(const SlotRecord& bay);

    [[nodiscard]] qsizetype count() const noexcept { return count_; }

    /// The first record with that number, from 1 to `shown`; an empty one where there is none.
    [[nodiscard]] const SlotRecord& numbered(int number) const;

    /// How many bays hold a job.
    [[nodiscard]] qsizetype active() const noexcept { return active_; }

    /// Jobs returned, over all bays; empty where the sum fits no 64-bit integer.
    [[nodiscard]] std::optional<qint64> completed() const noexcept { return completed_; }

    /// The same for jobs that failed.
    [[nodiscard]] std::optional<qint64> failed() const noexcept { return failed_; }

    bool operator==(const Bays&) const = default;

private:
    qsizetype count_ = 0;
    std::array<SlotRecord, shown> numbered_;
    qsizetype active_ = 0;
    std::optional<qint64> completed_ = 0;
    std::optional<qint64> failed_ = 0;
};

} // namespace vesk

#include "model/Bays.h"

#include "model/Checked.h"

#include <algorithm>
#include <utility>

namespace vesk {

Bays::Bays(QList<SlotRecord> records) : records_(std::move(records)) {
    // Backwards, so that of two with one number the first stays.
    std::for_each(records_.crbegin(), records_.crend(), [this](const SlotRecord& bay) {
        if (bay.slot && *bay.slot >= 1 && *bay.slot <= shown) {
            numbered_.at(static_cast<size_t>(*bay.slot - 1)) = bay;
        }
    });
    active_ = std::count_if(records_.cbegin(), records_.cend(), isActive);
    for (const SlotRecord& bay : std::as_const(records_)) {
        completed_ = sum(completed_, bay.completed.value_or(0));
        failed_ = sum(failed_, bay.failed.value_or(0));
    }
}

const SlotRecord& Bays::numbered(int number) const {
    return numbered_.at(static_cast<size_t>(number - 1));
}

} // namespace vesk

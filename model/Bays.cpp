#include "model/Bays.h"

#include "model/Checked.h"

namespace vesk {

void Bays::append(const SlotRecord& bay) {
    ++count_;
    if (bay.slot && *bay.slot >= 1 && *bay.slot <= shown) {
        SlotRecord& numbered = numbered_.at(static_cast<size_t>(*bay.slot - 1));
        if (!numbered.slot) {
            numbered = bay;
        }
    }
    active_ += isActive(bay) ? 1 : 0;
    completed_ = sum(completed_, bay.completed.value_or(0));
    failed_ = sum(failed_, bay.failed.value_or(0));
}

const SlotRecord& Bays::numbered(int number) const {
    return numbered_.at(static_cast<size_t>(number - 1));
}

} // namespace vesk

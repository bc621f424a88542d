#include "model/SlotRecord.h"

namespace vesk {

using namespace Qt::StringLiterals;

bool isActive(const SlotRecord& slot) {
    return slot.state == u"busy"_s || slot.state == u"waiting"_s;
}

} // namespace vesk

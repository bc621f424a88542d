#include "model/SlotRecord.h"

#include "model/LenientReader.h"

namespace vesk {

using namespace Qt::StringLiterals;

bool isActive(const SlotRecord& slot) {
    const auto state = lenient::string(slot, u"state");
    return state == u"busy"_s || state == u"waiting"_s;
}

} // namespace vesk

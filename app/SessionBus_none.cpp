#include "app/SessionBus.h"

namespace vesk {

bool giveUpSilentSessionBus() {
    return false;
}

} // namespace vesk

#include "ui/dashboard/NativeWindowState.h"

namespace vesk {

// Qt reports a covered window as not exposed, and knows which ones are minimised.
std::unique_ptr<NativeWindowState>
NativeWindowState::make(const QWindow& /*window*/, std::function<void()> /*changed*/) {
    return nullptr;
}

} // namespace vesk

#include "app/Reopen.h"

namespace vesk {

void onReopen(QObject* /*owner*/, std::function<void()> /*reopened*/) {}

} // namespace vesk

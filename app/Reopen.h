#pragma once

#include <functional>

class QObject;

namespace vesk {

/// Calls `reopened` when the person asks for the running application again, where the system has
/// such a gesture (a click on the Dock icon), as long as `owner` lives.
void onReopen(QObject* owner, std::function<void()> reopened);

} // namespace vesk

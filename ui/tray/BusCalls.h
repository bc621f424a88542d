#pragma once

#include <QDBusMessage>

namespace vesk {

/// A call of `method` of the message bus itself ("D-Bus Specification", "Message Bus Messages").
[[nodiscard]] QDBusMessage callToBus(const QString& method);

/// The call that asks the bus for `name`, which it refuses while the name has another owner.
[[nodiscard]] QDBusMessage nameRequest(const QString& name);

} // namespace vesk

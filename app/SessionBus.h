#pragma once

namespace vesk {

/// Has this process and its children do without a session bus that accepts a connection and does
/// not answer within a second. Qt connects on the main thread before it shows a window, and would
/// wait for half a minute. Returns whether the bus was given up. To be called before Qt connects.
[[nodiscard]] bool giveUpSilentSessionBus();

} // namespace vesk

#pragma once

namespace vesk {

/// The rest of the rack between jobs, in seconds.
struct Cooldown {
    double left = 0;  ///< 0 and less when it is over
    double whole = 0; ///< length of a whole one
};

} // namespace vesk

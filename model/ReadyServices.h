#pragma once

namespace vesk {

/// Which engines of the service are ready.
struct ReadyServices {
    bool deepScan = false; ///< photos
    bool video = false;
    bool audio = false; ///< sound events
    bool ocr = false;

    bool operator==(const ReadyServices&) const = default;
};

} // namespace vesk

#pragma once

#include "tools/worker-sim/Random.h"

#include <cstdint>
#include <string>

namespace vesk::sim {

/// One pass over one item that a phone sent, with all its durations already drawn.
struct Job {
    std::string id;
    std::string stage; ///< describe, audio, ocr or precheck
    std::string mediaKind;
    std::string model;
    std::string sourceDevice;

    Seconds queued{};
    Seconds waitingModel{}; ///< the least; a lane must be free as well
    Seconds loadingModel{};
    Seconds processing{};
    Seconds returning{};

    int frames = 0;                  ///< 0: this pass counts none
    std::int64_t frameSpacingMs = 0; ///< between two frames of the video
    bool fails = false;

    /// Deep jobs are those that the user can switch off.
    [[nodiscard]] bool deep() const { return stage == "describe" || stage == "audio"; }
};

/// Draws a job; `number` makes its id. Without `deep` only text and prescan jobs come.
[[nodiscard]] Job drawJob(Random& random, int number, bool deep, const std::string& sourceDevice);

} // namespace vesk::sim

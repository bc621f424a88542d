#pragma once

#include "tools/worker-sim/Random.h"

#include <array>
#include <cstdint>
#include <string>

namespace vesk::sim {

/// What a bay does with its job, in this order.
enum class Phase { Queued, WaitingModel, LoadingModel, Processing, Returning, Cooling, Done };

/// The names of the engines that the simulation claims to use.
namespace models {
inline constexpr auto photo = "vision-language:7b";
inline constexpr auto video = "SmolVLM2-500M-Video";
inline constexpr auto audio = "MIT/ast-finetuned-audioset-10-10-0.4593";
inline constexpr auto text = "Apple Vision";
} // namespace models

/// The longest rest after a job.
constexpr Seconds longestCooling{20};

/// One pass over one item that a phone sent.
struct Job {
    std::string id;
    std::string stage; ///< describe, audio, ocr or precheck
    std::string mediaKind;
    std::string model;
    std::string sourceDevice;
    std::array<Seconds, static_cast<std::size_t>(Phase::Done)> lengths{}; ///< of the phases
    int frames = 0;                                                       ///< 0: it counts none
    std::int64_t frameSpacingMs = 0; ///< between two frames of the video
    bool fails = false;

    [[nodiscard]] Seconds length(Phase phase) const {
        return lengths.at(static_cast<std::size_t>(phase));
    }

    /// Deep jobs are those that the user can switch off.
    [[nodiscard]] bool deep() const { return stage == "describe" || stage == "audio"; }
};

/// Draws a job; `number` makes its id. Without `deep` only text and prescan jobs come.
[[nodiscard]] Job drawJob(Random& random, int number, bool deep, const std::string& sourceDevice);

} // namespace vesk::sim

#pragma once

/// The names of the engines that the simulation claims to use.
namespace vesk::sim::models {

inline constexpr auto photo = "vision-language:7b";
inline constexpr auto video = "SmolVLM2-500M-Video";
inline constexpr auto audio = "MIT/ast-finetuned-audioset-10-10-0.4593";
inline constexpr auto text = "Apple Vision";

} // namespace vesk::sim::models

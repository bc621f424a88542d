#include "tools/worker-sim/Job.h"

namespace vesk::sim {

namespace {

struct Kind {
    const char* stage;
    const char* mediaKind;
    const char* model;
    double least; ///< seconds of processing
    double most;
};

constexpr std::array kinds{
    Kind{"describe", "video", models::video, 6, 14},
    Kind{"describe", "photo", models::photo, 6, 11}, Kind{"audio", "audio", models::audio, 5, 9},
    Kind{"ocr", "photo", models::text, 2, 4}, Kind{"precheck", "photo", models::text, 1.5, 3}};
constexpr int firstLightKind = 3;
constexpr int failureEvery = 25;

} // namespace

Job drawJob(Random& random, int number, bool deep, const std::string& sourceDevice) {
    const int last = static_cast<int>(kinds.size()) - 1;
    const int drawn = random.whole(deep ? 0 : firstLightKind, last);
    const Kind& kind = kinds.at(static_cast<std::size_t>(drawn));
    const bool fromVideo = kind.mediaKind != std::string("photo");
    Job job{
        .id = (fromVideo ? "clip-" : "photo-") + std::to_string(number) + (fromVideo ? "@1" : ""),
        .stage = kind.stage,
        .mediaKind = kind.mediaKind,
        .model = kind.model,
        .sourceDevice = sourceDevice,
        .lengths =
            {random.seconds(0.6, 1.2), random.seconds(0.5, 1.2), random.seconds(0.8, 1.8),
             random.seconds(kind.least, kind.most), random.seconds(0.8, 1.4),
             random.seconds(2, longestCooling.count())},
        .fails = number % failureEvery == 0};
    if (job.mediaKind == "video") {
        job.frames = random.whole(6, 14);
        job.frameSpacingMs = std::int64_t{100} * random.whole(8, 30);
    }
    return job;
}

} // namespace vesk::sim

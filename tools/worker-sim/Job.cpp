#include "tools/worker-sim/Job.h"

#include "tools/worker-sim/Models.h"

namespace vesk::sim {

namespace {

constexpr double failureRate = 0.04;

void makeVideo(Job& job, Random& random) {
    job.stage = "describe";
    job.mediaKind = "video";
    job.model = models::video;
    job.frames = random.whole(6, 14);
    job.frameSpacingMs = std::int64_t{100} * random.whole(8, 30);
    job.processing = random.seconds(0.8, 1.1) * job.frames;
}

void makePhoto(Job& job, Random& random) {
    job.stage = "describe";
    job.mediaKind = "photo";
    job.model = models::photo;
    job.processing = random.seconds(6, 11);
}

void makeSound(Job& job, Random& random) {
    job.stage = "audio";
    job.mediaKind = "audio";
    job.model = models::audio;
    job.processing = random.seconds(5, 9);
}

void makeText(Job& job, Random& random) {
    job.stage = "ocr";
    job.mediaKind = "photo";
    job.model = models::text;
    job.processing = random.seconds(2, 4);
}

void makePrescan(Job& job, Random& random) {
    job.stage = "precheck";
    job.mediaKind = "photo";
    job.model = models::text;
    job.processing = random.seconds(1.5, 3);
}

} // namespace

Job drawJob(Random& random, int number, bool deep, const std::string& sourceDevice) {
    Job job;
    job.sourceDevice = sourceDevice;
    job.queued = random.seconds(0.6, 1.2);
    job.waitingModel = random.seconds(0.5, 1.2);
    job.loadingModel = random.seconds(0.8, 1.8);
    job.returning = random.seconds(0.8, 1.4);
    job.fails = random.chance(failureRate);

    const double kind = deep ? random.between(0, 1) : random.between(0.8, 1);
    if (kind < 0.35) {
        makeVideo(job, random);
    } else if (kind < 0.65) {
        makePhoto(job, random);
    } else if (kind < 0.8) {
        makeSound(job, random);
    } else if (kind < 0.9) {
        makeText(job, random);
    } else {
        makePrescan(job, random);
    }

    const bool fromVideo = job.mediaKind != "photo";
    job.id = (fromVideo ? "clip-" : "photo-") + std::to_string(number) + (fromVideo ? "@1" : "");
    return job;
}

} // namespace vesk::sim

#include "tools/worker-sim/Bay.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <utility>

namespace vesk::sim {

namespace {

struct Names {
    const char* state;
    const char* phase;
};

constexpr std::array<Names, static_cast<std::size_t>(Phase::Done)> names{
    {{"waiting", "queued"},
     {"waiting", "waiting_model"},
     {"busy", "loading_model"},
     {"busy", "processing"},
     {"busy", "returning"},
     {"busy", "cooling"}}};

} // namespace

bool Bay::occupiesLane() const {
    return job_ && (phase_ == Phase::LoadingModel || phase_ == Phase::Processing);
}

Seconds Bay::cooling() const {
    return job_ && phase_ == Phase::Cooling ? job_->length(phase_) - inPhase_ : Seconds(0);
}

void Bay::accept(Job job) {
    job_ = std::move(job);
    phase_ = Phase::Queued;
    inPhase_ = Seconds(0);
    elapsed_ = Seconds(0);
}

void Bay::giveBackUnstarted() {
    if (job_ && job_->deep() && phase_ <= Phase::WaitingModel) {
        job_.reset();
    }
}

void Bay::advance(Seconds step, bool laneFree) {
    if (last_) {
        last_->ago += step;
    }
    if (!job_) {
        return;
    }
    elapsed_ += step;
    inPhase_ += step;
    if (inPhase_ < job_->length(phase_) || (phase_ == Phase::WaitingModel && !laneFree)) {
        return;
    }
    phase_ = static_cast<Phase>(static_cast<int>(phase_) + 1);
    inPhase_ = Seconds(0);
    if (phase_ == Phase::Cooling) {
        finish();
    } else if (phase_ == Phase::Done) {
        job_.reset();
    }
}

void Bay::finish() {
    ++(job_->fails ? failed_ : completed_);
    last_ = Finished{job_->stage, job_->mediaKind};
}

nlohmann::json Bay::record() const {
    nlohmann::json slot{{"slot", number_}, {"completed", completed_}, {"failed", failed_}};
    if (last_) {
        slot["last_stage"] = last_->stage;
        slot["last_media_kind"] = last_->mediaKind;
        slot["last_finished_seconds_ago"] = static_cast<std::int64_t>(last_->ago.count());
    }
    if (!job_) {
        slot["state"] = "idle";
        slot["phase"] = "ready";
        return slot;
    }

    const Names& name = names.at(static_cast<std::size_t>(phase_));
    slot["state"] = name.state;
    slot["phase"] = name.phase;
    slot["job"] = job_->id;
    slot["source_device"] = job_->sourceDevice;
    slot["elapsed_ms"] = static_cast<std::int64_t>(elapsed_.count() * 1000);
    slot["media_kind"] = job_->mediaKind;
    if (phase_ == Phase::Queued) {
        // The engine is chosen when the job leaves the queue.
        slot["stage"] = "job";
        return slot;
    }

    slot["stage"] = job_->stage;
    slot["model"] = job_->model;
    if (phase_ == Phase::Processing && job_->frames > 0) {
        const auto done = static_cast<int>(inPhase_ / job_->length(phase_) * job_->frames);
        slot["progress_current"] = done + 1;
        slot["progress_total"] = job_->frames;
        slot["position_ms"] = done * job_->frameSpacingMs;
    }
    return slot;
}

} // namespace vesk::sim

#include "tools/worker-sim/Bay.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace vesk::sim {

namespace {

const char* nameOf(Phase phase) {
    switch (phase) {
    case Phase::Idle:
        return "ready";
    case Phase::Queued:
        return "queued";
    case Phase::WaitingModel:
        return "waiting_model";
    case Phase::LoadingModel:
        return "loading_model";
    case Phase::Processing:
        return "processing";
    case Phase::Returning:
        return "returning";
    case Phase::Cooling:
        return "cooling";
    }
    return "";
}

const char* stateOf(Phase phase) {
    switch (phase) {
    case Phase::Idle:
        return "idle";
    case Phase::Queued:
    case Phase::WaitingModel:
        return "waiting";
    default:
        return "busy";
    }
}

std::int64_t whole(double value) {
    return static_cast<std::int64_t>(std::floor(value));
}

} // namespace

Seconds Bay::cooling() const {
    return phase_ == Phase::Cooling ? std::max(rest_ - inPhase_, Seconds(0)) : Seconds(0);
}

void Bay::accept(Job job) {
    job_ = std::move(job);
    elapsed_ = Seconds(0);
    enter(Phase::Queued);
}

void Bay::giveBackUnstarted() {
    if (job_.deep() && (phase_ == Phase::Queued || phase_ == Phase::WaitingModel)) {
        enter(Phase::Idle);
    }
}

void Bay::advance(Seconds step, bool laneFree, int dutyPercent) {
    inPhase_ += step;
    if (last_) {
        last_->ago += step;
    }
    if (phase_ != Phase::Idle) {
        elapsed_ += step;
    }

    switch (phase_) {
    case Phase::Idle:
        break;
    case Phase::Queued:
        if (inPhase_ >= job_.queued) {
            enter(Phase::WaitingModel);
        }
        break;
    case Phase::WaitingModel:
        if (inPhase_ >= job_.waitingModel && laneFree) {
            enter(Phase::LoadingModel);
        }
        break;
    case Phase::LoadingModel:
        if (inPhase_ >= job_.loadingModel) {
            enter(Phase::Processing);
        }
        break;
    case Phase::Processing:
        if (inPhase_ >= job_.processing) {
            enter(Phase::Returning);
        }
        break;
    case Phase::Returning:
        if (inPhase_ >= job_.returning) {
            finish(dutyPercent);
        }
        break;
    case Phase::Cooling:
        if (inPhase_ >= rest_) {
            enter(Phase::Idle);
        }
        break;
    }
}

void Bay::enter(Phase phase) {
    phase_ = phase;
    inPhase_ = Seconds(0);
}

void Bay::finish(int dutyPercent) {
    ++(job_.fails ? failed_ : completed_);
    last_ = Finished{job_.stage, job_.mediaKind};
    const Seconds wanted = job_.processing * (100.0 - dutyPercent) / dutyPercent;
    rest_ = std::clamp(wanted, Seconds(2), coolingCap);
    enter(Phase::Cooling);
}

int Bay::currentFrame() const {
    const auto frame = static_cast<int>(inPhase_ / job_.processing * job_.frames) + 1;
    return std::min(frame, job_.frames);
}

nlohmann::json Bay::record() const {
    nlohmann::json slot{
        {"slot", number_},
        {"state", stateOf(phase_)},
        {"phase", nameOf(phase_)},
        {"completed", completed_},
        {"failed", failed_}};
    if (last_) {
        slot["last_stage"] = last_->stage;
        slot["last_media_kind"] = last_->mediaKind;
        slot["last_finished_seconds_ago"] = whole(last_->ago.count());
    }
    if (idle()) {
        return slot;
    }

    slot["job"] = job_.id;
    slot["source_device"] = job_.sourceDevice;
    slot["elapsed_ms"] = whole(elapsed_.count() * 1000);
    slot["media_kind"] = job_.mediaKind;
    if (phase_ == Phase::Queued) {
        // The engine is chosen when the job leaves the queue.
        slot["stage"] = "job";
        return slot;
    }

    slot["stage"] = job_.stage;
    slot["model"] = job_.model;
    if (phase_ == Phase::Processing && job_.frames > 0) {
        slot["progress_current"] = currentFrame();
        slot["progress_total"] = job_.frames;
        slot["position_ms"] = (currentFrame() - 1) * job_.frameSpacingMs;
    }
    return slot;
}

} // namespace vesk::sim

#pragma once

#include "tools/worker-sim/Job.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>

namespace vesk::sim {

enum class Phase { Idle, Queued, WaitingModel, LoadingModel, Processing, Returning, Cooling };

/// One processing slot. It takes a job through its phases, one after the other.
class Bay {
public:
    /// The longest rest after a job.
    static constexpr Seconds coolingCap{20};

    /// `number` is shown, and starts at 1.
    explicit Bay(int number) : number_(number) {}

    [[nodiscard]] Phase phase() const { return phase_; }
    [[nodiscard]] bool idle() const { return phase_ == Phase::Idle; }

    /// Whether the job is at an engine now, so that it counts against the lanes.
    [[nodiscard]] bool occupiesLane() const {
        return phase_ == Phase::LoadingModel || phase_ == Phase::Processing;
    }

    /// What is left of the rest after a job; zero when there is none.
    [[nodiscard]] Seconds cooling() const;

    /// Only for an idle bay.
    void accept(Job job);

    /// Gives a deep job back to its phone as long as no engine has begun on it.
    void giveBackUnstarted();

    /// `laneFree`: an engine may begin. `dutyPercent`, above 0, decides how long the rest is.
    void advance(Seconds step, bool laneFree, int dutyPercent);

    /// The bay's element of `slots`.
    [[nodiscard]] nlohmann::json record() const;

private:
    void enter(Phase phase);
    void finish(int dutyPercent);
    [[nodiscard]] int currentFrame() const;

    int number_;
    Phase phase_ = Phase::Idle;
    Seconds inPhase_{};
    Seconds elapsed_{};
    Seconds rest_{};
    Job job_;
    int completed_ = 0;
    int failed_ = 0;

    struct Finished {
        std::string stage;
        std::string mediaKind;
        Seconds ago{};
    };
    std::optional<Finished> last_;
};

} // namespace vesk::sim

#pragma once

#include "tools/worker-sim/Job.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>

namespace vesk::sim {

/// One processing slot. It takes a job through its phases, one after the other.
class Bay {
public:
    /// `number` is shown, and starts at 1.
    explicit Bay(int number) : number_(number) {}

    [[nodiscard]] bool idle() const { return !job_; }

    /// Whether an engine has the job now, so that it counts against the lanes.
    [[nodiscard]] bool occupiesLane() const;

    /// What is left of the rest after a job; zero when there is none.
    [[nodiscard]] Seconds cooling() const;

    /// Only for an idle bay.
    void accept(Job job);

    /// Gives a deep job back to its phone as long as no engine has begun on it.
    void giveBackUnstarted();

    /// `laneFree`: an engine may begin.
    void advance(Seconds step, bool laneFree);

    /// The bay's element of `slots`.
    [[nodiscard]] nlohmann::json record() const;

private:
    struct Finished {
        std::string stage;
        std::string mediaKind;
        Seconds ago{};
    };

    void finish();

    int number_;
    std::optional<Job> job_;
    Phase phase_{};
    Seconds inPhase_{};
    Seconds elapsed_{};
    int completed_ = 0;
    int failed_ = 0;
    std::optional<Finished> last_;
};

} // namespace vesk::sim

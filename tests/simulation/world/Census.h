#pragma once

#include <QString>

#include <optional>

namespace vesk {

/// Counts what a program keeps, at moments in which it has nothing special open.
class Census {
public:
    /// To be called about once an hour. What has grown, or nothing.
    [[nodiscard]] QString take(std::size_t timers);

private:
    struct Count {
        std::size_t timers = 0;
        std::size_t bytes = 0;
    };

    std::optional<qsizetype> widgets_; // always the same
    int hours_ = 0;
    Count most_;                 // in the first hours
    std::optional<Count> least_; // of as many hours since
};

} // namespace vesk

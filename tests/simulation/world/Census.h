#pragma once

#include <QHash>
#include <QString>

namespace vesk {

/// Counts what a program keeps, at moments in which it has the same open.
class Census {
public:
    /// To be called about once an hour. What has grown, or nothing.
    [[nodiscard]] QString take(std::size_t timers);

private:
    static constexpr int settling = 10; // until caches are full
    static constexpr qsizetype slack = 512 * 1024;

    int taken_ = 0;
    qsizetype widgets_ = 0;
    std::size_t timers_ = 0;
    std::size_t bytes_ = 0;
};

} // namespace vesk

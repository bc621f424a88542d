#pragma once

#include <QtGlobal>

#include <chrono>
#include <random>

namespace vesk {

/// Where all of a simulation's choices come from: of one seed the same ones everywhere, for which
/// the library's own distributions give no promise.
class Dice {
public:
    using Duration = std::chrono::milliseconds;

    explicit Dice(quint64 seed) : engine_(seed) {}

    /// 0 to `count` - 1.
    [[nodiscard]] int below(int count) {
        return static_cast<int>((engine_() >> 16U) % static_cast<quint64>(count));
    }

    /// Both ends included.
    [[nodiscard]] int between(int least, int most) { return least + below(most - least + 1); }

    [[nodiscard]] Duration between(Duration least, Duration most) {
        return least + Duration(below(static_cast<int>((most - least).count()) + 1));
    }

    [[nodiscard]] bool oneIn(int count) { return below(count) == 0; }

    template<typename List>
    [[nodiscard]] const auto& oneOf(const List& list) {
        return list[static_cast<typename List::size_type>(below(static_cast<int>(list.size())))];
    }

private:
    std::mt19937_64 engine_;
};

} // namespace vesk

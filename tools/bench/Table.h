#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vesk::bench {

/// The middle one, or the mean of the two in the middle. There is at least one.
[[nodiscard]] double median(std::vector<double> values);

struct Wanted {
    enum class Of { Ratio, Amount };
    Of of;
    double most;
};

/// One measure of both programs; values at the same place were taken side by side.
struct Row {
    std::string measure;
    std::string unit;
    Wanted wanted;
    std::vector<double> bare;
    std::vector<double> ours;
};

/// Prints each row as soon as it is known, and writes them all down at the end.
class Table {
public:
    Table();

    void add(Row row);

    /// Every single value, as JSON.
    void write(const std::filesystem::path& file) const;

private:
    std::vector<Row> rows_;
};

} // namespace vesk::bench

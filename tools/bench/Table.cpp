#include "tools/bench/Table.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <functional>
#include <utility>

namespace vesk::bench {

namespace {

std::string number(double value) {
    constexpr double manyDigits = 10;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.*f", value < manyDigits ? 2 : 1, value);
    return text.data();
}

std::vector<double> ratios(const Row& row) {
    std::vector<double> result;
    std::ranges::transform(row.ours, row.bare, std::back_inserter(result), std::divides());
    return result;
}

/// Of what the wanted value limits.
std::string spread(const Row& row) {
    const auto values = row.wanted.of == Wanted::Of::Ratio ? ratios(row) : row.ours;
    const auto [least, most] = std::ranges::minmax(values);
    return number(least) + ".." + number(most);
}

std::string wanted(const Row& row) {
    const std::string most = "<= " + number(row.wanted.most);
    return row.wanted.of == Wanted::Of::Ratio ? most : most + ' ' + row.unit;
}

void print(const std::array<std::string, 6>& cells) {
    std::printf(
        "| %-48s | %12s | %12s | %6s | %14s | %12s |\n", cells[0].c_str(), cells[1].c_str(),
        cells[2].c_str(), cells[3].c_str(), cells[4].c_str(), cells[5].c_str());
    std::fflush(stdout);
}

} // namespace

double median(std::vector<double> values) {
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

Table::Table() {
    print({"measure", "bare", "ours", "ratio", "spread", "wanted"});
    print({"---", "---:", "---:", "---:", "---:", "---:"});
}

void Table::add(Row row) {
    print(
        {row.measure, number(median(row.bare)) + ' ' + row.unit,
         number(median(row.ours)) + ' ' + row.unit, number(median(ratios(row))), spread(row),
         wanted(row)});
    rows_.push_back(std::move(row));
}

void Table::write(const std::filesystem::path& file) const {
    auto document = nlohmann::ordered_json::array();
    for (const Row& row : rows_) {
        const bool ofRatio = row.wanted.of == Wanted::Of::Ratio;
        document.push_back(
            {{"measure", row.measure},
             {"unit", row.unit},
             {"bare", row.bare},
             {"ours", row.ours},
             {"ratios", ratios(row)},
             {ofRatio ? "wanted_ratio" : "wanted_ours", row.wanted.most}});
    }
    std::ofstream(file) << document.dump(2) << '\n';
}

} // namespace vesk::bench

#include "tools/bench/Measures.h"

#include "tools/bench/Figures.h"
#include "tools/bench/Trial.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <fstream>
#include <future>
#include <memory>
#include <span>
#include <thread>
#include <utility>

namespace vesk::bench {

using namespace std::chrono_literals;

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int pairs = 3;

constexpr auto busy = 1500ms;
constexpr auto idle = 5000ms;
// The dashboard shares its wake-ups on whole seconds: 10 s and 30 s become these.
constexpr auto hiddenBusy = 11000ms;
constexpr auto hiddenIdle = 31000ms;

constexpr Situation resting{.document = Document::Resting, .hidden = false, .interval = idle};
constexpr Situation changing{.document = Document::Changing, .hidden = false, .interval = busy};
constexpr Situation large{.document = Document::Large, .hidden = false, .interval = busy};

Wanted ratio(double most) {
    return {.of = Wanted::Of::Ratio, .most = most};
}

Wanted amount(double most) {
    return {.of = Wanted::Of::Amount, .most = most};
}

void note(Row& row, Kind kind, double value) {
    (kind == Kind::Bare ? row.bare : row.ours).push_back(value);
}

struct CpuCase {
    const char* name;
    Situation situation;
    int fetches;
    double wantedRatio;
};

Row rowOf(const CpuCase& what) {
    const bool asks = what.situation.document != Document::None;
    return {
        .measure = what.name,
        .unit = asks ? "ms" : "ms/min",
        .wanted = ratio(what.wantedRatio),
        .bare = {},
        .ours = {}};
}

double cpuIn(const Trial& trial, const CpuCase& what) {
    if (what.situation.document != Document::None) {
        return trial.cpuPerFetch(what.fetches);
    }
    // Three misses in a row must be over, with which the dashboard takes the service for stopped.
    std::this_thread::sleep_for(3 * idle);
    return trial.cpuPerMinute(1min);
}

/// All pairs of all cases at the same time: the clocks read are those of the programs.
void measureTogether(Screen& screen, Table& table, std::span<const CpuCase> cases) {
    std::vector<std::unique_ptr<Trial>> trials;
    std::vector<std::vector<std::pair<Kind, std::future<double>>>> results;
    for (const CpuCase& what : cases) {
        auto& results_of_case = results.emplace_back();
        for (int pair = 0; pair < pairs; ++pair) {
            for (const Kind kind : kinds) {
                const int place = static_cast<int>(trials.size());
                const Trial& trial = *trials.emplace_back(
                    std::make_unique<Trial>(screen, kind, what.situation, place));
                results_of_case.emplace_back(
                    kind, std::async(std::launch::async, [&] { return cpuIn(trial, what); }));
            }
        }
    }
    for (std::size_t index = 0; index < cases.size(); ++index) {
        Row row = rowOf(cases[index]);
        for (auto& [kind, value] : results[index]) {
            note(row, kind, value.get());
        }
        table.add(std::move(row));
    }
}

} // namespace

void measureStart(Screen& screen, Table& table) {
    constexpr int starts = 25;
    Row row{
        .measure = "start to first window",
        .unit = "ms",
        .wanted = ratio(1.25),
        .bare = {},
        .ours = {}};
    for (int start = 0; start <= starts; ++start) {
        // Who comes second finds the machine warmer.
        auto order = kinds;
        if (start % 2 == 1) {
            std::swap(order[0], order[1]);
        }
        for (const Kind kind : order) {
            const Trial trial(screen, kind, resting, 0);
            // The first pair fills the caches.
            if (start > 0) {
                note(row, kind, Milliseconds(trial.startTime()).count());
            }
        }
    }
    table.add(std::move(row));
}

void measureMemory(Screen& screen, Table& table) {
    std::vector<std::pair<Kind, std::unique_ptr<Trial>>> trials;
    for (int place = 0; place < pairs * 2; ++place) {
        const Kind kind = kinds.at(static_cast<std::size_t>(place % 2));
        trials.emplace_back(kind, std::make_unique<Trial>(screen, kind, resting, place));
    }
    Row resident{
        .measure = "resident, visible idle",
        .unit = "MiB",
        .wanted = ratio(1.2),
        .bare = {},
        .ours = {}};
    Row anonymous{
        .measure = "anonymous, visible idle",
        .unit = "MiB",
        .wanted = ratio(1.4),
        .bare = {},
        .ours = {}};
    for (const auto& [kind, trial] : trials) {
        constexpr int settled = 4;
        trial->peer().awaitFetches(settled, settled * idle);
    }
    for (const auto& [kind, trial] : trials) {
        const Memory memory = memoryOf(trial->pid());
        note(resident, kind, memory.resident);
        note(anonymous, kind, memory.anonymous);
    }
    table.add(std::move(resident));
    table.add(std::move(anonymous));
}

void measureCpu(Screen& screen, Table& table) {
    // What is to be hidden comes first: the keyboard goes on to another window each time.
    constexpr std::array quiet{
        CpuCase{
            .name = "CPU hidden idle, per fetch",
            .situation = {.document = Document::Resting, .hidden = true, .interval = hiddenIdle},
            .fetches = 2,
            .wantedRatio = 1},
        CpuCase{
            .name = "CPU hidden busy, per fetch",
            .situation = {.document = Document::Changing, .hidden = true, .interval = hiddenBusy},
            .fetches = 6,
            .wantedRatio = 1},
        CpuCase{
            .name = "CPU hidden, no worker",
            .situation = {.document = Document::None, .hidden = true, .interval = hiddenIdle},
            .fetches = 0,
            .wantedRatio = 1},
        CpuCase{
            .name = "CPU visible, no worker",
            .situation = {.document = Document::None, .hidden = false, .interval = idle},
            .fetches = 0,
            .wantedRatio = 1.05},
        CpuCase{
            .name = "CPU visible idle, per fetch",
            .situation = resting,
            .fetches = 12,
            .wantedRatio = 1.05}};
    constexpr std::array changes{CpuCase{
        .name = "CPU visible busy, changing document, per fetch",
        .situation = changing,
        .fetches = 30,
        .wantedRatio = 1.3}};
    constexpr std::array repeats{CpuCase{
        .name = "CPU visible busy, identical document, per fetch",
        .situation = {.document = Document::Still, .hidden = false, .interval = busy},
        .fetches = 30,
        .wantedRatio = 1.05}};
    measureTogether(screen, table, changes);
    measureTogether(screen, table, repeats);
    measureTogether(screen, table, quiet);
}

void measureScale(Screen& screen, Table& table) {
    constexpr int fetches = 6;
    Row cpu{
        .measure = "10,000: CPU a fetch, all threads",
        .unit = "ms",
        .wanted = amount(20),
        .bare = {},
        .ours = {}};
    Row wait{
        .measure = "10,000: longest wait of the main thread",
        .unit = "ms",
        .wanted = amount(8),
        .bare = {},
        .ours = {}};
    Row anonymous{
        .measure = "10,000: anonymous memory",
        .unit = "MiB",
        .wanted = amount(20),
        .bare = {},
        .ours = {}};
    for (int run = 0; run < pairs; ++run) {
        // One after the other: each of them can keep a core busy.
        for (const Kind kind : kinds) {
            const Trial trial(screen, kind, large, 0);
            note(cpu, kind, trial.cpuPerFetch(fetches));
            note(anonymous, kind, memoryOf(trial.pid()).anonymous);
            // After the processor time, since each question costs some.
            note(wait, kind, Milliseconds(screen.longestAnswer(trial.window(), 3 * busy)).count());
        }
    }
    table.add(std::move(cpu));
    table.add(std::move(wait));
    table.add(std::move(anonymous));
}

void soak(Screen& screen, std::chrono::minutes duration, const std::filesystem::path& file) {
    const Trial bare(screen, Kind::Bare, changing, 0);
    const Trial ours(screen, Kind::Ours, changing, 1);
    constexpr auto row = "| %6s | %13s | %14s | %10s | %13s | %14s | %10s |\n";
    std::printf(
        row, "minute", "bare resident", "bare anonymous", "bare files", "ours resident",
        "ours anonymous", "ours files");
    std::printf(row, "---:", "---:", "---:", "---:", "---:", "---:", "---:");
    auto document = nlohmann::ordered_json::array();
    for (std::chrono::minutes minute{};; ++minute) {
        std::printf("| %6d |", static_cast<int>(minute.count()));
        auto& sample = document.emplace_back();
        sample["minute"] = minute.count();
        for (const Trial* trial : {&bare, &ours}) {
            const Memory memory = memoryOf(trial->pid());
            const int files = descriptorsOf(trial->pid());
            std::printf(
                " %9.2f MiB | %10.2f MiB | %10d |", memory.resident, memory.anonymous, files);
            sample[trial == &bare ? "bare" : "ours"] = {
                {"resident", memory.resident},
                {"anonymous", memory.anonymous},
                {"files", files},
                {"fetches", trial->peer().fetches()}};
        }
        std::printf("\n");
        std::fflush(stdout);
        std::ofstream(file) << document.dump(2) << '\n';
        if (minute >= duration) {
            return;
        }
        std::this_thread::sleep_for(1min);
    }
}

} // namespace vesk::bench

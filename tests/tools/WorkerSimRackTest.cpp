#include "tests/TestProgram.h"
#include "tools/worker-sim/Rack.h"

#include <nlohmann/json.hpp>

#include <QTest>

#include <algorithm>
#include <map>
#include <set>
#include <string>

using nlohmann::json;
using vesk::sim::Mode;
using vesk::sim::Rack;
using vesk::sim::Seconds;

namespace {

/// Lets that much time pass and shows `look` the health document again and again, more often than a
/// phase may change.
template<typename Look>
void watch(Rack& rack, Seconds time, const Look& look) {
    constexpr Seconds glance{0.4};
    for (Seconds passed{}; passed < time && !QTest::currentTestFailed(); passed += glance) {
        rack.advance(glance);
        look(rack.health());
    }
}

bool deep(const json& slot) {
    const std::string stage = slot.value("stage", "");
    return stage == "describe" || stage == "audio";
}

bool deepAndWaiting(const json& slot) {
    return deep(slot) && slot["state"] == "waiting";
}

int jobsOf(const json& slot) {
    return slot["completed"].get<int>() + slot["failed"].get<int>();
}

struct Step {
    std::string next;
    std::string state;
};

const std::map<std::string, Step> phases{
    {"ready", {"queued", "idle"}},
    {"queued", {"waiting_model", "waiting"}},
    {"waiting_model", {"loading_model", "waiting"}},
    {"loading_model", {"processing", "busy"}},
    {"processing", {"returning", "busy"}},
    {"returning", {"cooling", "busy"}},
    {"cooling", {"ready", "busy"}}};

} // namespace

class WorkerSimRackTest : public QObject {
    Q_OBJECT

private slots:
    void jobsGoThroughThePhasesInOrderAndAreCountedOnce() {
        Rack rack({}, 7);
        json before = rack.health()["slots"];
        std::set<std::string> seen;
        std::set<int> frames;
        int failed = 0;
        watch(rack, Seconds(900), [&](const json& health) {
            bool cooling = false;
            for (std::size_t index = 0; index < before.size(); ++index) {
                const json& slot = health["slots"][index];
                const json& earlier = before[index];
                const std::string phase = slot["phase"];
                QVERIFY2(
                    slot["phase"] == earlier["phase"] || phase == phases.at(earlier["phase"]).next,
                    phase.c_str());
                QCOMPARE(slot["state"].get<std::string>(), phases.at(phase).state);
                const bool returned = phase == "cooling" && earlier["phase"] == "returning";
                QCOMPARE(jobsOf(slot), jobsOf(earlier) + (returned ? 1 : 0));
                QVERIFY(!returned || slot["last_stage"] == earlier["stage"]);
                failed = std::max(failed, slot["failed"].get<int>());
                const bool counts = phase == "processing" && slot["stage"] == "describe"
                                    && slot["media_kind"] == "video";
                QCOMPARE(slot.contains("progress_current"), counts);
                if (counts) {
                    const int frame = slot["progress_current"];
                    QVERIFY(frame >= 1 && frame <= slot["progress_total"]);
                    QCOMPARE(slot["position_ms"] > 0, frame > 1);
                    frames.insert(frame);
                }
                cooling = cooling || phase == "cooling";
                seen.insert(phase);
            }
            QCOMPARE(health["cooldown_seconds"] > 0, cooling);
            QVERIFY(health["cooldown_seconds"] <= health["cooldown_cap_seconds"]);
            before = health["slots"];
        });
        QCOMPARE(seen.size(), phases.size());
        QVERIFY(failed > 0);
        QVERIFY(frames.size() > 5);
    }

    void withoutDeepJobsWhatWaitsGoesBackAndTheRestIsFinished() {
        Rack rack({.bays = 8}, 11);
        rack.advance(Seconds(4));
        QVERIFY(std::ranges::any_of(rack.health()["slots"], deepAndWaiting));
        rack.setDeepEnabled(false);
        std::set<std::string> begun;
        const json bays = rack.health()["slots"];
        for (const json& slot : bays) {
            QVERIFY(!deepAndWaiting(slot));
            QCOMPARE(jobsOf(slot), 0);
            begun.insert(slot.value("job", ""));
        }
        std::set<std::string> light;
        int finished = 0;
        watch(rack, Seconds(300), [&](const json& health) {
            finished = 0;
            for (const json& slot : health["slots"]) {
                QVERIFY(!deep(slot) || begun.contains(slot["job"]));
                finished += jobsOf(slot);
                if (!deep(slot) && slot["phase"] == "processing") {
                    light.insert(slot["stage"]);
                }
            }
        });
        QCOMPARE(light, (std::set<std::string>{"ocr", "precheck"}));
        QVERIFY(finished > 8);
    }

    void budgetFollowsTheMode_data() {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<int>("mostDuty");
        QTest::addColumn<int>("mostLanes");
        QTest::newRow("automatic") << Mode::Automatic << 65 << 3;
        QTest::newRow("quiet") << Mode::Quiet << 20 << 1;
        QTest::newRow("faster") << Mode::Faster << 85 << 3;
    }

    void budgetFollowsTheMode() {
        QFETCH(const Mode, mode);
        Rack rack({}, 4);
        rack.setMode(mode);
        int duty = 0;
        int lanes = 0;
        watch(rack, Seconds(150), [&](const json& health) {
            duty = std::max(duty, health["duty_percent"].get<int>());
            const auto running = std::ranges::count_if(health["slots"], [](const json& slot) {
                return slot["phase"] == "loading_model" || slot["phase"] == "processing";
            });
            lanes = std::max(lanes, static_cast<int>(running));
        });
        QTEST(duty, "mostDuty");
        QTEST(lanes, "mostLanes");
    }

    void phonesComeAndGo() {
        Rack rack({.devices = 2}, 9);
        std::set<std::size_t> counts;
        watch(rack, Seconds(300), [&](const json& health) {
            counts.insert(health["connected_devices"].size());
        });
        QCOMPARE(counts, (std::set<std::size_t>{1, 2}));
    }

    void withoutPhonesNoJobsCome() {
        Rack rack({.devices = 0}, 1);
        watch(rack, Seconds(60), [](const json& health) {
            QVERIFY(std::ranges::all_of(
                health["slots"], [](const json& slot) { return slot["state"] == "idle"; }));
        });
    }

    void sameSeedGivesTheSameRun() {
        const auto run = [](std::uint64_t seed, Seconds time) {
            Rack rack({}, seed);
            rack.advance(time);
            return rack.health().dump();
        };
        QCOMPARE(run(42, Seconds(100)), run(42, Seconds(100)));
        QVERIFY(run(42, Seconds(100)) != run(43, Seconds(100)));
        // A machine that slept does not keep the worker busy for as long.
        QCOMPARE(run(1, Seconds(1e12)), run(1, Seconds(600)));
    }
};

VESK_TEST(WorkerSimRackTest)
#include "WorkerSimRackTest.moc"

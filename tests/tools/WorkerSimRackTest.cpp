#include "tests/TestProgram.h"
#include "tools/worker-sim/Rack.h"

#include <nlohmann/json.hpp>

#include <QTest>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

using nlohmann::json;
using vesk::sim::Mode;
using vesk::sim::Rack;
using vesk::sim::Seconds;

namespace {

/// Shorter than any phase lasts.
constexpr Seconds glance{0.4};
/// For what changes slowly.
constexpr Seconds seldom{2};

bool active(const json& slot) {
    return slot["state"] == "busy" || slot["state"] == "waiting";
}

bool deep(const json& slot) {
    return active(slot) && slot.contains("model")
           && (slot["stage"] == "describe" || slot["stage"] == "audio");
}

auto activeBays(const json& health) {
    return std::ranges::count_if(health["slots"], active);
}

/// Lets that much time pass and shows `look` the health document after every `step`.
template<typename Look>
void watch(Rack& rack, Seconds time, Seconds step, const Look& look) {
    for (Seconds passed{}; passed < time && !QTest::currentTestFailed(); passed += step) {
        rack.advance(step);
        look(rack.health());
    }
}

} // namespace

class WorkerSimRackTest : public QObject {
    Q_OBJECT

private slots:
    void movesWithinTwoSeconds() {
        for (unsigned seed = 0; seed < 50; ++seed) {
            Rack rack({}, seed);
            rack.advance(Seconds(0.5));
            QVERIFY2(activeBays(rack.health()) >= 1, std::to_string(seed).c_str());
            rack.advance(Seconds(1.5));
            QCOMPARE(activeBays(rack.health()), 3);
        }
    }

    void goesThroughThePhasesInOrder() {
        const std::map<std::string, std::pair<std::string, std::string>> next{
            {"ready", {"queued", "idle"}},
            {"queued", {"waiting_model", "waiting"}},
            {"waiting_model", {"loading_model", "waiting"}},
            {"loading_model", {"processing", "busy"}},
            {"processing", {"returning", "busy"}},
            {"returning", {"cooling", "busy"}},
            {"cooling", {"ready", "busy"}}};
        Rack rack({}, 7);
        std::map<int, std::string> phases{{1, "ready"}, {2, "ready"}, {3, "ready"}};
        std::map<std::string, int> seen;
        watch(rack, Seconds(600), glance, [&](const json& health) {
            QCOMPARE(health["slots"].size(), 3U);
            for (const json& slot : health["slots"]) {
                const std::string phase = slot["phase"];
                std::string& before = phases.at(slot["slot"]);
                if (phase != before) {
                    QCOMPARE(phase, next.at(before).first);
                    ++seen[phase];
                    before = phase;
                }
                QCOMPARE(slot["state"].get<std::string>(), next.at(phase).second);
            }
        });
        QCOMPARE(seen.size(), next.size());
        QVERIFY(seen["cooling"] > 30);
    }

    void countsEveryReturnedJobOnce() {
        Rack rack({}, 3);
        std::map<int, json> before;
        int returned = 0;
        int failures = 0;
        watch(rack, Seconds(1000), glance, [&](const json& health) {
            for (const json& slot : health["slots"]) {
                json& earlier = before[slot["slot"]];
                if (!earlier.is_null()) {
                    const int sum = slot["completed"].get<int>() + slot["failed"].get<int>();
                    const int old = earlier["completed"].get<int>() + earlier["failed"].get<int>();
                    const bool ended =
                        earlier["phase"] == "returning" && slot["phase"] == "cooling";
                    QCOMPARE(sum, old + (ended ? 1 : 0));
                    if (ended) {
                        ++returned;
                        failures += slot["failed"].get<int>() - earlier["failed"].get<int>();
                        QVERIFY(slot["last_stage"] == earlier["stage"]);
                        QVERIFY(slot["last_media_kind"] == earlier["media_kind"]);
                        QVERIFY(slot["last_finished_seconds_ago"] == 0);
                    }
                }
                earlier = slot;
            }
        });
        QVERIFY(returned > 100);
        QVERIFY(failures > 0 && failures < returned / 5);
    }

    void countsTheFramesOfAVideo() {
        Rack rack({}, 5);
        std::map<std::string, std::set<int>> frames;
        std::map<std::string, std::pair<int, std::int64_t>> last;
        watch(rack, Seconds(300), glance, [&](const json& health) {
            for (const json& slot : health["slots"]) {
                const bool counts = slot["phase"] == "processing" && slot["stage"] == "describe"
                                    && slot["media_kind"] == "video";
                QCOMPARE(slot.contains("progress_current"), counts);
                QCOMPARE(slot.contains("progress_total"), counts);
                QCOMPARE(slot.contains("position_ms"), counts);
                if (!counts) {
                    continue;
                }
                const std::string job = slot["job"];
                const int frame = slot["progress_current"];
                const std::int64_t position = slot["position_ms"];
                QVERIFY(frame >= 1 && frame <= slot["progress_total"].get<int>());
                QVERIFY(frame >= last[job].first && position >= last[job].second);
                last[job] = {frame, position};
                frames[job].insert(frame);
            }
        });
        QVERIFY(frames.size() > 5);
        QVERIFY(
            std::ranges::count_if(
                frames,
                [](const auto& entry) {
                    return entry.second.size() >= 6 && *entry.second.begin() == 1;
                })
            > 5);
    }

    void tellsTheRestOfTheCoolingBay() {
        Rack rack({}, 2);
        int seen = 0;
        watch(rack, Seconds(200), glance, [&](const json& health) {
            const double rest = health["cooldown_seconds"];
            const bool cooling = std::ranges::any_of(
                health["slots"], [](const json& slot) { return slot["phase"] == "cooling"; });
            QVERIFY(cooling || rest == 0.0);
            QVERIFY(rest >= 0 && rest <= health["cooldown_cap_seconds"]);
            seen += cooling && rest > 0 ? 1 : 0;
        });
        QVERIFY(seen > 20);
    }

    void drainsWithoutDeepJobs() {
        Rack rack({}, 11);
        rack.advance(Seconds(4));
        QVERIFY(std::ranges::any_of(rack.health()["slots"], deep));
        rack.setDeepEnabled(false);
        QVERIFY(rack.health()["deep_scan_enabled"] == false);

        std::set<std::string> begun;
        const json atOnce = rack.health();
        for (const json& slot : atOnce["slots"]) {
            if (deep(slot)) {
                QVERIFY(slot["phase"] != "waiting_model");
                begun.insert(slot["job"]);
            }
        }
        bool allIdle = false;
        std::set<std::string> light;
        watch(rack, Seconds(300), glance, [&](const json& health) {
            for (const json& slot : health["slots"]) {
                if (deep(slot)) {
                    QVERIFY(begun.contains(slot["job"]));
                } else if (active(slot) && slot.contains("model")) {
                    light.insert(slot["stage"]);
                }
            }
            allIdle = allIdle || activeBays(health) == 0;
        });
        QVERIFY(allIdle);
        QCOMPARE(light, (std::set<std::string>{"ocr", "precheck"}));

        rack.setDeepEnabled(true);
        bool back = false;
        watch(rack, Seconds(30), glance, [&](const json& health) {
            back = back || std::ranges::any_of(health["slots"], deep);
        });
        QVERIFY(back);
    }

    void givesUnstartedDeepJobsBack() {
        Rack rack({}, 1);
        rack.advance(Seconds(0.3));
        QVERIFY(rack.health()["slots"][0]["phase"] == "queued");
        QVERIFY(rack.health()["slots"][0]["job"].get<std::string>().starts_with("clip"));
        rack.setDeepEnabled(false);
        QVERIFY(rack.health()["slots"][0]["phase"] == "ready");
        QVERIFY(rack.health()["slots"][0]["completed"] == 0);
        QVERIFY(rack.health()["slots"][0]["failed"] == 0);
    }

    void followsTheMode_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("configured");
        QTest::addColumn<int>("ceiling");
        QTest::newRow("automatic") << "automatic" << 40 << 65;
        QTest::newRow("quiet") << "quiet" << 20 << 65;
        QTest::newRow("faster") << "faster" << 55 << 85;
    }

    void followsTheMode() {
        QFETCH(QString, name);
        QFETCH(int, configured);
        QFETCH(int, ceiling);
        Rack rack({}, 1);
        rack.setMode(vesk::sim::modeFromName(name.toStdString()).value());
        int mostLanes = 0;
        int mostDuty = 0;
        watch(rack, Seconds(900), seldom, [&](const json& health) {
            const json& policy = health["activity_policy"];
            QVERIFY(policy["performance_mode"] == name.toStdString());
            QVERIFY(policy["configured_duty_percent"] == configured);
            QVERIFY(policy["idle_ceiling_percent"] == ceiling);
            QVERIFY(policy["effective_duty_percent"] == health["duty_percent"]);
            QVERIFY(policy["configured_workers"] == 3);
            QVERIFY(!policy["reason"].get<std::string>().empty());
            QVERIFY(policy["effective_workers"] >= 1);
            mostLanes = std::max(mostLanes, policy["effective_workers"].get<int>());
            mostDuty = std::max(mostDuty, health["duty_percent"].get<int>());
        });
        QCOMPARE(mostLanes, name == QStringLiteral("quiet") ? 1 : 3);
        QCOMPARE(mostDuty, name == QStringLiteral("quiet") ? 20 : ceiling);
    }

    void beginsNoJobBeyondTheLanes() {
        Rack rack({8, 2}, 4);
        rack.setMode(Mode::Quiet);
        watch(rack, Seconds(200), glance, [](const json& health) {
            const auto running = std::ranges::count_if(health["slots"], [](const json& slot) {
                return slot["phase"] == "loading_model" || slot["phase"] == "processing";
            });
            QVERIFY(running <= 1);
            QVERIFY(health["activity_policy"]["workers"] == running);
        });
    }

    void slowsDownAtOnceAndRecoversGradually() {
        Rack rack({}, 1);
        rack.advance(Seconds(10));
        const int before = rack.health()["duty_percent"];
        QVERIFY(before > 40);
        rack.setMode(Mode::Quiet);
        QVERIFY(rack.health()["duty_percent"] == 20);
        rack.setMode(Mode::Automatic);
        QVERIFY(rack.health()["duty_percent"] == 20);
        rack.advance(Seconds(5));
        const int after = rack.health()["duty_percent"];
        QVERIFY(after >= 28 && after <= 31);
    }

    void warmsUpAndCoolsDown() {
        Rack rack({}, 1);
        std::set<std::string> states;
        watch(rack, Seconds(600), seldom, [&](const json& health) {
            const json& policy = health["activity_policy"];
            states.insert(policy["thermal_state"]);
            if (policy["thermal_state"] != "nominal") {
                QVERIFY(policy["effective_workers"] == 1);
            }
        });
        QCOMPARE(states, (std::set<std::string>{"nominal", "fair"}));
    }

    void phonesComeAndGo() {
        Rack rack({3, 2}, 9);
        std::set<std::size_t> counts;
        std::set<std::string> senders;
        int longest = 0;
        watch(rack, Seconds(1200), seldom, [&](const json& health) {
            const json& devices = health["connected_devices"];
            counts.insert(devices.size());
            for (const json& device : devices) {
                QVERIFY(device["device_id"].is_string() && device["name"].is_string());
                longest = std::max(longest, device["last_seen_seconds"].get<int>());
            }
            for (const json& slot : health["slots"]) {
                if (slot.contains("source_device")) {
                    senders.insert(slot["source_device"]);
                }
            }
        });
        QCOMPARE(counts, (std::set<std::size_t>{1, 2}));
        QCOMPARE(senders, (std::set<std::string>{"corvala-phone-1", "corvala-phone-2"}));
        QVERIFY(longest >= 30 && longest < 40);
    }

    void withoutPhonesNoJobsCome() {
        Rack rack({3, 0}, 1);
        watch(rack, Seconds(60), seldom, [](const json& health) {
            QCOMPARE(activeBays(health), 0);
            QVERIFY(health["connected_devices"].empty());
        });
    }

    void hasAsManyBaysAndPhonesAsAskedFor_data() {
        QTest::addColumn<int>("bays");
        QTest::addColumn<int>("devices");
        QTest::newRow("none") << 0 << 0;
        QTest::newRow("one") << 1 << 1;
        QTest::newRow("many") << 64 << 64;
    }

    void hasAsManyBaysAndPhonesAsAskedFor() {
        QFETCH(int, bays);
        QFETCH(int, devices);
        Rack rack({bays, devices}, 1);
        rack.advance(Seconds(5));
        const json health = rack.health();
        QCOMPARE(health["connected_devices"].size(), static_cast<std::size_t>(devices));
        QCOMPARE(health["slots"].size(), static_cast<std::size_t>(bays));
        int number = 0;
        for (const json& slot : health["slots"]) {
            QVERIFY(slot["slot"] == ++number);
        }
    }

    void theSeedDecides() {
        Rack one({}, 42);
        Rack same({}, 42);
        Rack other({}, 43);
        for (Rack* rack : {&one, &same, &other}) {
            rack->advance(Seconds(100));
        }
        QCOMPARE(one.health().dump(), same.health().dump());
        QVERIFY(one.health() != other.health());
    }

    void aLongPauseIsCutShort() {
        Rack rack({}, 1);
        Rack minutes({}, 1);
        rack.advance(Seconds(1e12));
        minutes.advance(Seconds(600));
        QCOMPARE(rack.health().dump(), minutes.health().dump());
    }
};

VESK_TEST(WorkerSimRackTest)
#include "WorkerSimRackTest.moc"

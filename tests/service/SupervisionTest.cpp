#include "tests/model/LogCapture.h"
#include "tests/simulation/SimulatedExchange.h"
#include "tests/simulation/VirtualTimeRun.h"

#include "service/BackendCheck.h"
#include "service/DeepJobSwitch.h"
#include "service/RefreshLoop.h"
#include "service/ServiceClient.h"

#include <QRegularExpression>
#include <QSignalSpy>

using namespace vesk;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qint64 port = 8791;
const QByteArray healthy = R"({"deep_scan_enabled": true})";
const QByteArray ready = R"({"backend": {"reachable": true, "model_ready": true}})";

TimePoint now() {
    return VirtualTime::instance().now();
}

void pass(VirtualTime::Duration duration) {
    VirtualTime::instance().pass(duration);
}

struct Scene {
    SimulatedExchange exchange;
    ServiceClient client{exchange, port};
    RefreshLoop::Situation situation;
    RefreshLoop loop{client, [this] { return situation; }, now};
    QSignalSpy received{&loop, &RefreshLoop::healthReceived};
    QSignalSpy missed{&loop, &RefreshLoop::healthMissed};

    /// How long until the next request, which is ended with a failure.
    std::chrono::milliseconds untilNextRequest() {
        const TimePoint begin = now();
        std::optional<TimePoint> at;
        exchange.requested = [&](std::size_t, const ServiceRequest&) { at = now(); };
        while (!at && now() - begin < 1min) {
            pass(1ms);
        }
        exchange.requested = {};
        exchange.end(exchange.underWay().constLast(), std::nullopt);
        return std::chrono::duration_cast<std::chrono::milliseconds>(*at - begin);
    }
};

} // namespace

/// The loop, the readiness check and the deep-job switch, in virtual time.
class SupervisionTest : public QObject {
    Q_OBJECT

private slots:
    void intervalFollowsTheSituation_data() {
        QTest::addColumn<bool>("visible");
        QTest::addColumn<bool>("active");
        QTest::addColumn<bool>("setup");
        QTest::addColumn<std::chrono::milliseconds>("interval");
        QTest::addColumn<std::chrono::milliseconds>("latest");
        QTest::newRow("hidden, idle") << false << false << false << 30'000ms << 31'000ms;
        QTest::newRow("hidden, busy") << false << true << false << 10'000ms << 11'000ms;
        QTest::newRow("visible, idle") << true << false << false << 5'000ms << 5'500ms;
        QTest::newRow("visible, busy") << true << true << false << 1'500ms << 1'650ms;
        QTest::newRow("setup") << false << false << true << 1'500ms << 1'650ms;
    }

    void intervalFollowsTheSituation() {
        QFETCH(const bool, visible);
        QFETCH(const bool, active);
        QFETCH(const bool, setup);
        QFETCH(const std::chrono::milliseconds, interval);
        QFETCH(const std::chrono::milliseconds, latest);
        Scene scene;
        scene.situation = {.attention = {visible, setup}, .active = active};
        pass(1min);
        QCOMPARE(scene.exchange.requests().size(), 0);
        scene.loop.scheduleRefresh();
        for (int round = 0; round < 3; ++round) {
            const auto waited = scene.untilNextRequest();
            QVERIFY2(waited >= interval, qPrintable(QString::number(waited.count())));
            QVERIFY2(waited <= latest, qPrintable(QString::number(waited.count())));
        }
    }

    void schedulingAgainReplacesTheTimer() {
        Scene scene;
        scene.loop.scheduleRefresh();
        scene.situation.attention.visible = true;
        scene.loop.scheduleRefresh();
        QVERIFY(scene.untilNextRequest() <= 5'500ms);
        scene.situation.attention.visible = false;
        scene.loop.scheduleRefresh();
        QVERIFY(scene.untilNextRequest() >= 30s);
    }

    void nextFetchIsLogged() {
        Scene scene;
        scene.situation = {.attention = {.visible = true, .setup = false}, .active = true};
        const LogCapture log;
        scene.loop.scheduleRefresh();
        QCOMPARE(log.lines().size(), 1);
        static const QRegularExpression form(
            uR"(^vesk\.service: event=next-fetch in_ms=(\d+) visible=true setup=false active=true$)"_s);
        const auto wait = form.match(log.lines().constFirst()).captured(1).toInt();
        QVERIFY2(wait >= 1500 && wait <= 1650, qPrintable(log.lines().constFirst()));
    }

    void goodAnswerIsTold() {
        Scene scene;
        scene.loop.reload();
        QCOMPARE(scene.exchange.requests().size(), 1);
        QCOMPARE(scene.exchange.requests().constFirst(), request(port, "/v1/health"));
        pass(1h);
        QCOMPARE(scene.exchange.requests().size(), 1);
        QCOMPARE(scene.received.size(), 0);
        scene.exchange.end(0, R"({"deep_scan_enabled": false, "workers": 1})");
        QCOMPARE(scene.received.size(), 1);
        QCOMPARE(scene.missed.size(), 0);
        const auto health = scene.received.constFirst().constFirst().value<ConfirmedHealth>();
        QVERIFY(!health.deep);
        QCOMPARE(health.document.workers, std::optional<qint64>(1));
        pass(33s);
        QCOMPARE(scene.exchange.requests().size(), 2);
    }

    void whoIsToldMayAskAtOnce() {
        Scene scene;
        connect(&scene.loop, &RefreshLoop::healthReceived, this, [&] {
            if (scene.exchange.requests().size() == 1) {
                scene.loop.reload();
            }
        });
        scene.loop.reload();
        scene.exchange.end(0, healthy);
        QCOMPARE(scene.exchange.requests().size(), 2);
    }

    void answerWithoutDeepScanIsAMiss() {
        Scene scene;
        scene.loop.reload();
        scene.exchange.end(0, R"({"deep_scan_enabled": "true"})");
        QCOMPARE(scene.missed.size(), 1);
        QCOMPARE(scene.received.size(), 0);
        pass(33s);
        QCOMPARE(scene.exchange.requests().size(), 2);
    }

    void twoReloadsSendOneRequest() {
        Scene scene;
        scene.loop.reload();
        scene.loop.reload();
        pass(33s);
        QCOMPARE(scene.exchange.requests().size(), 1);
        scene.exchange.end(0, healthy);
        QCOMPARE(scene.exchange.requests().size(), 1);
        scene.loop.reload();
        QCOMPARE(scene.exchange.requests().size(), 2);
    }

    void noFetchDuringAPolicyChange() {
        Scene scene;
        DeepJobSwitch deepJobs(scene.client);
        std::optional<bool> confirmed;
        deepJobs.send(false, [&](const auto& answer) {
            QVERIFY(!deepJobs.changingPolicy());
            confirmed = answer && answer->deep;
        });
        QVERIFY(deepJobs.changingPolicy());
        QCOMPARE(scene.exchange.requests().constFirst().body, R"({"deep_scan_enabled":false})");
        scene.situation.changingPolicy = true;
        scene.loop.reload();
        pass(2min);
        QCOMPARE(scene.exchange.requests().size(), 1);
        scene.exchange.end(0, healthy);
        QCOMPARE(confirmed, true);
        scene.situation.changingPolicy = false;
        pass(33s);
        QCOMPARE(scene.exchange.requestsOf("GET /v1/health"), 1);
    }

    void wakeUpsFallOnWholeSeconds_data() {
        QTest::addColumn<qint64>("now");
        QTest::addColumn<qint64>("interval");
        QTest::addColumn<qint64>("tolerance");
        QTest::addColumn<qint64>("delay");
        QTest::newRow("second within reach") << 100LL << 30000LL << 1000LL << 30900LL;
        QTest::newRow("second at the earliest") << 0LL << 30000LL << 1000LL << 31000LL;
        QTest::newRow("second at the latest") << 500LL << 1500LL << 500LL << 1500LL;
        QTest::newRow("none within reach") << 200LL << 1500LL << 150LL << 1500LL;
        QTest::newRow("just within reach") << 350LL << 1500LL << 150LL << 1650LL;
        QTest::newRow("one short of reach") << 349LL << 1500LL << 150LL << 1500LL;
        QTest::newRow("no tolerance") << 1LL << 1500LL << 0LL << 1500LL;
    }

    void wakeUpsFallOnWholeSeconds() {
        QFETCH(const qint64, now);
        QFETCH(const qint64, interval);
        QFETCH(const qint64, tolerance);
        using std::chrono::milliseconds;
        QTEST(
            qint64(sharedWakeUp({.now = milliseconds(now),
                                 .interval = milliseconds(interval),
                                 .tolerance = milliseconds(tolerance)})
                       .count()),
            "delay");
    }

    void pollsFallOnWholeSeconds() {
        Scene scene;
        scene.situation.attention.visible = true;
        pass(1s - now().time_since_epoch() % 1s + 700ms);
        scene.loop.scheduleRefresh();
        QCOMPARE(scene.untilNextRequest(), 5'300ms);
        QCOMPARE(scene.untilNextRequest(), 5'000ms);
    }

    void readinessHasItsOwnCadence() {
        Scene scene;
        BackendCheck check(scene.client, now);
        const QSignalSpy answers(&check, &BackendCheck::answered);
        QVERIFY(!check.backendReady());
        const TimePoint asked = now();
        check.checkIfDue({.visible = true});
        QCOMPARE(scene.exchange.requests().size(), 1);
        QCOMPARE(scene.exchange.requests().constFirst(), request(port, "/v1/diagnostics"));
        // A slow check is not repeated.
        check.checkIfDue({.visible = true});
        QCOMPARE(scene.exchange.requests().size(), 1);
        pass(3s);
        scene.exchange.end(0, ready);
        QCOMPARE(answers.size(), 1);
        QCOMPARE(check.backendReady(), true);

        pass(asked + 60s - now());
        check.checkIfDue({.visible = true});
        QCOMPARE(scene.exchange.requests().size(), 1);
        pass(1ms);
        check.checkIfDue({});
        QCOMPARE(scene.exchange.requests().size(), 1);
        check.checkIfDue({.visible = true});
        QCOMPARE(scene.exchange.requests().size(), 2);
    }

    void failedReadinessCheckReadsFalse_data() {
        QTest::addColumn<std::optional<QByteArray>>("answer");
        QTest::newRow("no answer") << std::optional<QByteArray>();
        QTest::newRow("incomplete")
            << std::optional<QByteArray>(R"({"backend": {"reachable": true}})");
    }

    void failedReadinessCheckReadsFalse() {
        QFETCH(const std::optional<QByteArray>, answer);
        Scene scene;
        BackendCheck check(scene.client, now);
        const QSignalSpy answers(&check, &BackendCheck::answered);
        check.checkIfDue({.visible = true});
        scene.exchange.end(0, answer);
        QCOMPARE(answers.size(), 1);
        QCOMPARE(check.backendReady(), false);
    }

    void resetForgetsACheckUnderWay() {
        Scene scene;
        BackendCheck check(scene.client, now);
        const QSignalSpy answers(&check, &BackendCheck::answered);
        check.checkIfDue({.visible = true});
        check.reset();
        scene.exchange.end(0, "{}");
        QCOMPARE(answers.size(), 0);
        QVERIFY(!check.backendReady());
        check.checkIfDue({.visible = true});
        QCOMPARE(scene.exchange.requests().size(), 2);
        scene.exchange.end(1, ready);
        QCOMPARE(answers.size(), 1);
        QCOMPARE(check.backendReady(), true);
    }

    void modeRequest() {
        Scene scene;
        bool good = false;
        scene.client.postPerformanceMode(
            u"faster"_s, this, [&](const auto& answer) { good = answer.has_value(); });
        QCOMPARE(
            scene.exchange.requests().constFirst(),
            postRequest(port, "/v1/local/performance", {{u"mode"_s, u"faster"_s}}));
        scene.exchange.end(0, healthy);
        QVERIFY(good);
    }
};

VESK_VIRTUAL_TIME_TEST(QCoreApplication, SupervisionTest)
#include "SupervisionTest.moc"

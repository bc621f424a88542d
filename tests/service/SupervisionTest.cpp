#include "HttpPeer.h"

#include "service/BackendCheck.h"
#include "service/DeepJobSwitch.h"
#include "service/HttpSession.h"
#include "service/RefreshLoop.h"
#include "service/ServiceClient.h"

#include <QSignalSpy>
#include <QTest>

using namespace vesk;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

TimePoint steady() {
    return std::chrono::steady_clock::now();
}

} // namespace

/// The loop, the readiness check and the deep-job switch against a real peer.
class SupervisionTest : public QObject {
    Q_OBJECT

private slots:
    void intervalFollowsTheSituation_data() {
        QTest::addColumn<bool>("visible");
        QTest::addColumn<bool>("active");
        QTest::addColumn<bool>("setup");
        QTest::addColumn<double>("seconds");
        QTest::newRow("hidden, idle") << false << false << false << 30.0;
        QTest::newRow("hidden, busy") << false << true << false << 10.0;
        QTest::newRow("visible, idle") << true << false << false << 5.0;
        QTest::newRow("visible, busy") << true << true << false << 1.5;
        QTest::newRow("setup") << false << false << true << 1.5;
    }

    void intervalFollowsTheSituation() {
        QFETCH(const bool, visible);
        QFETCH(const bool, active);
        QFETCH(const bool, setup);
        QFETCH(const double, seconds);
        HttpSession session;
        ServiceClient client(session, 1);
        RefreshLoop loop(
            client,
            [=] {
                return RefreshLoop::Situation{{visible, setup}, active};
            },
            steady);
        QVERIFY(!loop.pendingInterval());
        loop.scheduleRefresh();
        QCOMPARE(loop.pendingInterval()->count(), seconds);
    }

    void goodAnswerIsTold() {
        HttpPeer peer;
        peer.answerWithJson(R"({"deep_scan_enabled": false, "workers": 1})");
        HttpSession session;
        ServiceClient client(session, peer.serverPort());
        RefreshLoop loop(
            client, [] { return RefreshLoop::Situation{}; }, steady);
        std::optional<ConfirmedHealth> got;
        connect(&loop, &RefreshLoop::healthReceived, this, [&](const ConfirmedHealth& health) {
            QVERIFY(!loop.refreshing());
            got = health;
        });
        loop.reload();
        QVERIFY(loop.refreshing());
        QVERIFY(!loop.pendingInterval());
        QTRY_VERIFY(got);
        QVERIFY(!got->deep);
        QCOMPARE(got->document.workers, std::optional<qint64>(1));
        QVERIFY(loop.pendingInterval());
        QVERIFY(peer.requests().constFirst().head.startsWith("GET /v1/health "));
    }

    void answerWithoutDeepScanIsAMiss() {
        HttpPeer peer;
        peer.answerWithJson(R"({"deep_scan_enabled": "true"})");
        HttpSession session;
        ServiceClient client(session, peer.serverPort());
        RefreshLoop loop(
            client, [] { return RefreshLoop::Situation{}; }, steady);
        const QSignalSpy misses(&loop, &RefreshLoop::healthMissed);
        loop.reload();
        QTRY_COMPARE(misses.size(), 1);
        QVERIFY(loop.pendingInterval());
    }

    void twoReloadsSendOneRequest() {
        HttpPeer peer;
        HttpSession session;
        ServiceClient client(session, peer.serverPort());
        RefreshLoop loop(
            client, [] { return RefreshLoop::Situation{}; }, steady);
        loop.reload();
        loop.reload();
        QVERIFY(loop.refreshing());
        QVERIFY(loop.pendingInterval());
        QTRY_COMPARE(peer.requests().size(), 1);
        QCOMPARE(peer.connections(), 1);
    }

    void noFetchDuringAPolicyChange() {
        HttpPeer peer;
        peer.answerWithJson(R"({"deep_scan_enabled": true})");
        HttpSession session;
        ServiceClient client(session, peer.serverPort());
        DeepJobSwitch deepJobs(client);
        RefreshLoop loop(
            client,
            [&] { return RefreshLoop::Situation{.changingPolicy = deepJobs.changingPolicy()}; },
            steady);
        const QSignalSpy answers(&loop, &RefreshLoop::healthReceived);
        bool confirmed = false;
        deepJobs.send(false, [&](const auto& answer) {
            QVERIFY(!deepJobs.changingPolicy());
            confirmed = answer && answer->deep;
        });
        QVERIFY(deepJobs.changingPolicy());
        loop.reload();
        QVERIFY(!loop.refreshing());
        QVERIFY(loop.pendingInterval());
        QTRY_VERIFY(confirmed);
        QCOMPARE(peer.requests().size(), 1);
        QCOMPARE(peer.requests().constFirst().body, R"({"deep_scan_enabled":false})");
        loop.reload();
        QTRY_COMPARE(answers.size(), 1);
    }

    void theTimerGoesOnByItself() {
        HttpPeer peer;
        peer.answerWithJson(R"({"deep_scan_enabled": true})");
        HttpSession session;
        ServiceClient client(session, peer.serverPort());
        RefreshLoop loop(
            client, [] { return RefreshLoop::Situation{.attention = {.setup = true}}; }, steady);
        QElapsedTimer clock;
        QList<qint64> at;
        connect(&peer, &HttpPeer::requestCame, this, [&] { at.append(clock.elapsed()); });
        clock.start();
        loop.reload();
        QTRY_COMPARE_WITH_TIMEOUT(at.size(), 3, 8000);
        QVERIFY2(at.at(1) - at.at(0) >= 1500, qPrintable(QString::number(at.at(1) - at.at(0))));
        QVERIFY2(at.at(2) - at.at(1) >= 1500, qPrintable(QString::number(at.at(2) - at.at(1))));
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

    void readinessHasItsOwnCadence() {
        HttpPeer peer;
        peer.answerWithJson(R"({"backend": {"reachable": true, "model_ready": true}})");
        HttpSession session;
        ServiceClient client(session, peer.serverPort());
        TimePoint now(1000s);
        BackendCheck check(client, [&] { return now; });
        const QSignalSpy answers(&check, &BackendCheck::answered);
        QVERIFY(!check.backendReady());
        check.checkIfDue({.visible = true});
        QCOMPARE(check.backendChecked(), TimePoint(1000s));
        // A slow check is not repeated.
        check.checkIfDue({.visible = true});
        QTRY_COMPARE(answers.size(), 1);
        QCOMPARE(check.backendReady(), true);

        now = TimePoint(1000s + 60s);
        check.checkIfDue({.visible = true});
        QCOMPARE(check.backendChecked(), TimePoint(1000s));
        now += 1ms;
        check.checkIfDue({});
        QCOMPARE(check.backendChecked(), TimePoint(1000s));
        check.checkIfDue({.visible = true});
        QCOMPARE(check.backendChecked(), now);
        QTRY_COMPARE(answers.size(), 2);
        QCOMPARE(peer.requests().size(), 2);
        QVERIFY(peer.requests().constFirst().head.startsWith("GET /v1/diagnostics "));
    }

    void failedReadinessCheckReadsFalse() {
        HttpPeer peer;
        peer.answerWithJson(R"({"backend": {"reachable": true}})");
        HttpSession session;
        ServiceClient client(session, peer.serverPort());
        BackendCheck check(client, [] { return TimePoint(1s); });
        const QSignalSpy answers(&check, &BackendCheck::answered);
        check.checkIfDue({.visible = true});
        QTRY_COMPARE(answers.size(), 1);
        QCOMPARE(check.backendReady(), false);
    }

    void resetForgetsACheckUnderWay() {
        HttpPeer peer;
        QTcpSocket* held = nullptr;
        peer.answerWith([&](QTcpSocket& socket) { held = &socket; });
        HttpSession session;
        ServiceClient client(session, peer.serverPort());
        BackendCheck check(client, [] { return TimePoint(1s); });
        const QSignalSpy answers(&check, &BackendCheck::answered);
        check.checkIfDue({.visible = true});
        QTRY_VERIFY(held);
        check.reset();
        QVERIFY(!check.backendChecked());
        held->write(HttpPeer::response("200 OK", "{}"));
        peer.answerWithJson(R"({"backend": {"reachable": true, "model_ready": true}})");
        check.checkIfDue({.visible = true});
        QTRY_COMPARE(answers.size(), 1);
        QCOMPARE(check.backendReady(), true);
        QCOMPARE(peer.requests().size(), 2);
    }

    void modeRequest() {
        HttpPeer peer;
        peer.answerWithJson(R"({"deep_scan_enabled": true})");
        HttpSession session;
        ServiceClient client(session, peer.serverPort());
        bool good = false;
        client.postPerformanceMode(
            u"faster"_s, this, [&](const auto& answer) { good = answer.has_value(); });
        QTRY_VERIFY(good);
        QVERIFY(peer.requests().constFirst().head.startsWith("POST /v1/local/performance "));
        QCOMPARE(peer.requests().constFirst().body, R"({"mode":"faster"})");
    }
};

QTEST_GUILESS_MAIN(SupervisionTest)
#include "SupervisionTest.moc"

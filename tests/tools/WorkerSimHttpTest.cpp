#include "tests/TestProgram.h"
#include "tests/tools/SimFixture.h"

#include <QSet>
#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using vesk::exchange;
using vesk::rawRequest;
using vesk::SimFixture;

namespace {

const QByteArray health = "/v1/health";
const QByteArray services = "/v1/local/services";
const QByteArray performance = "/v1/local/performance";

QSet<QString> keysOf(const QJsonObject& object) {
    const auto keys = object.keys();
    return {keys.begin(), keys.end()};
}

} // namespace

class WorkerSimHttpTest : public QObject {
    Q_OBJECT

private slots:
    void answersHealth() {
        const SimFixture fixture;
        const auto answer = fixture.get(health);
        QCOMPARE(answer.status(), 200);
        QCOMPARE(answer.ending, vesk::Ending::Closed);
        QCOMPARE(answer.header("Content-Type"), "application/json");
        QCOMPARE(answer.header("Content-Length").toLongLong(), answer.body().size());

        const QJsonObject document = SimFixture::document(answer);
        QCOMPARE(document[u"deep_scan_enabled"_s], QJsonValue(true));
        QVERIFY(keysOf(document).contains(
            {u"slots"_s, u"connected_devices"_s, u"cooldown_seconds"_s, u"cooldown_cap_seconds"_s,
             u"services"_s, u"video_backend"_s, u"audio_backend"_s, u"activity_policy"_s,
             u"duty_percent"_s, u"model"_s, u"device"_s, u"device_id"_s, u"workers"_s,
             u"configured_workers"_s}));
        QVERIFY(keysOf(document[u"activity_policy"_s].toObject())
                    .contains(
                        {u"performance_mode"_s, u"thermal_state"_s, u"configured_duty_percent"_s,
                         u"active_duty_percent"_s, u"idle_ceiling_percent"_s, u"duty_percent"_s,
                         u"effective_duty_percent"_s, u"configured_workers"_s, u"workers"_s,
                         u"effective_workers"_s, u"reason"_s}));
        QCOMPARE(
            document[u"services"_s],
            QJsonValue(QJsonObject{
                {u"deep_scan"_s, true}, {u"video"_s, true}, {u"audio"_s, true}, {u"ocr"_s, true}}));
        QVERIFY(document[u"audio_backend"_s][u"model"_s].toString().startsWith(u"MIT/"_s));
        QCOMPARE(document[u"video_backend"_s][u"model_ready"_s], QJsonValue(true));
        QCOMPARE(document[u"slots"_s].toArray().size(), 3);
        QCOMPARE(document[u"connected_devices"_s].toArray().size(), 2);
    }

    void answersDiagnostics() {
        const SimFixture fixture;
        const auto answer = fixture.get("/v1/diagnostics");
        QCOMPARE(answer.status(), 200);
        QCOMPARE(answer.header("Content-Type"), "application/json");
        QCOMPARE(answer.body(), R"({"backend":{"model_ready":true,"reachable":true}})");
    }

    void switchesDeepJobs() {
        const SimFixture fixture;
        for (const bool wanted : {false, true}) {
            const auto answer = fixture.post(
                services,
                wanted ? R"({"deep_scan_enabled":true})" : R"({"deep_scan_enabled":false})");
            QCOMPARE(answer.status(), 200);
            QCOMPARE(SimFixture::document(answer)[u"deep_scan_enabled"_s], QJsonValue(wanted));
            QCOMPARE(
                SimFixture::document(fixture.get(health))[u"deep_scan_enabled"_s],
                QJsonValue(wanted));
        }
    }

    void switchesTheMode() {
        const SimFixture fixture;
        for (const QString& mode : {u"quiet"_s, u"faster"_s, u"automatic"_s}) {
            const auto answer = fixture.post(performance, R"({"mode":")" + mode.toUtf8() + R"("})");
            QCOMPARE(answer.status(), 200);
            for (const auto& document :
                 {SimFixture::document(answer), SimFixture::document(fixture.get(health))}) {
                QCOMPARE(document[u"activity_policy"_s][u"performance_mode"_s], QJsonValue(mode));
                QCOMPARE(document[u"deep_scan_enabled"_s], QJsonValue(true));
            }
        }
    }

    void refusesBadBodies_data() {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("empty") << services << QByteArray();
        QTest::newRow("no JSON") << services << QByteArray("deep_scan_enabled");
        QTest::newRow("array") << services << QByteArray("[true]");
        QTest::newRow("empty object") << services << QByteArray("{}");
        QTest::newRow("text") << services << QByteArray(R"({"deep_scan_enabled":"true"})");
        QTest::newRow("number") << services << QByteArray(R"({"deep_scan_enabled":1})");
        QTest::newRow("second key")
            << services << QByteArray(R"({"deep_scan_enabled":true,"mode":"quiet"})");
        QTest::newRow("other key") << services << QByteArray(R"({"mode":"quiet"})");
        QTest::newRow("unknown mode") << performance << QByteArray(R"({"mode":"Quiet"})");
        QTest::newRow("mode number") << performance << QByteArray(R"({"mode":1})");
        QTest::newRow("mode missing") << performance << QByteArray("{}");
        QTest::newRow("not UTF-8") << performance << QByteArray("{\"mode\":\"\xff\"}");
    }

    void refusesBadBodies() {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, body);
        const SimFixture fixture;
        const auto answer = fixture.post(path, body);
        QCOMPARE(answer.status(), 400);
        QVERIFY(!SimFixture::document(answer)[u"error"_s].toString().isEmpty());
        const auto document = SimFixture::document(fixture.get(health));
        QCOMPARE(document[u"deep_scan_enabled"_s], QJsonValue(true));
        QCOMPARE(document[u"activity_policy"_s][u"performance_mode"_s], QJsonValue(u"automatic"_s));
        QCOMPARE(fixture.log().size(), 2);
    }

    void wantsTheContentType() {
        const SimFixture fixture;
        const QByteArray body = R"({"mode":"quiet"})";
        QCOMPARE(exchange(fixture.port(), rawRequest("POST", performance, body)).status(), 400);
    }

    void knowsItsPathsAndMethods_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<int>("status");
        QTest::newRow("unknown") << QByteArray("GET") << QByteArray("/v1/nothing") << 404;
        QTest::newRow("below") << QByteArray("GET") << QByteArray("/v1/health/") << 404;
        QTest::newRow("outside") << QByteArray("GET") << QByteArray("/") << 404;
        QTest::newRow("post health") << QByteArray("POST") << health << 405;
        QTest::newRow("get services") << QByteArray("GET") << services << 405;
        QTest::newRow("put services") << QByteArray("PUT") << services << 405;
        QTest::newRow("delete health") << QByteArray("DELETE") << health << 405;
    }

    void knowsItsPathsAndMethods() {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, path);
        QFETCH(int, status);
        const SimFixture fixture;
        QCOMPARE(exchange(fixture.port(), rawRequest(method, path)).status(), status);
    }

    void wantsTheToken_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("health") << QByteArray("GET") << health << QByteArray();
        QTest::newRow("diagnostics")
            << QByteArray("GET") << QByteArray("/v1/diagnostics") << QByteArray();
        QTest::newRow("services") << QByteArray("POST") << services
                                  << QByteArray(R"({"deep_scan_enabled":false})");
        QTest::newRow("performance")
            << QByteArray("POST") << performance << QByteArray(R"({"mode":"quiet"})");
    }

    void wantsTheToken() {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, body);
        const SimFixture fixture("s3cret");
        const auto statusWith = [&](const QList<QByteArray>& headers) {
            return exchange(
                       fixture.port(),
                       rawRequest(
                           method, path, body,
                           QList<QByteArray>{"Content-Type: application/json"} + headers))
                .status();
        };
        QCOMPARE(statusWith({}), 401);
        QCOMPARE(statusWith({"Authorization: s3cret"}), 401);
        QCOMPARE(statusWith({"Authorization: Bearer s3cret2"}), 401);
        QCOMPARE(statusWith({"Authorization: Bearer"}), 401);
        const auto untouched =
            SimFixture::document(fixture.get(health, {"Authorization: Bearer s3cret"}));
        QCOMPARE(untouched[u"deep_scan_enabled"_s], QJsonValue(true));
        QCOMPARE(statusWith({"Authorization: Bearer s3cret"}), 200);
    }

    void keepsAConnectionOpen() {
        const SimFixture fixture;
        QByteArray first = rawRequest("GET", "/v1/diagnostics");
        first.replace("Connection: close\r\n", "");
        const auto answer = exchange(fixture.port(), first + rawRequest("GET", "/v1/health"));
        QCOMPARE(answer.bytes.count("HTTP/1.1 200 OK"), 2);
        QCOMPARE(fixture.log().size(), 2);
    }

    void writesEveryRequestDown() {
        const SimFixture fixture;
        const QByteArray body = R"({"deep_scan_enabled":false})";
        QCOMPARE(
            exchange(
                fixture.port(),
                rawRequest(
                    "POST", services, body,
                    {"X-Zulu: 1", "Content-Type:application/json", "accept:  a, b ", "X-Alpha:"}))
                .status(),
            200);
        QCOMPARE(fixture.get("/v1/none?x=%41").status(), 404);

        const QJsonArray log = fixture.log();
        QCOMPARE(log.size(), 2);
        const QJsonObject post = log[0].toObject();
        QCOMPARE(post[u"sequence"_s].toInt(), 1);
        QCOMPARE(post[u"method"_s].toString(), u"POST"_s);
        QCOMPARE(post[u"path"_s].toString(), u"/v1/local/services"_s);
        QCOMPARE(post[u"body"_s].toString().toUtf8(), body);
        const auto pair = [](const QString& name, const QString& value) {
            return QJsonArray{name, value};
        };
        QCOMPARE(
            post[u"headers"_s].toArray(),
            (QJsonArray{
                pair(u"Host"_s, u"127.0.0.1"_s), pair(u"X-Zulu"_s, u"1"_s),
                pair(u"Content-Type"_s, u"application/json"_s), pair(u"accept"_s, u"a, b"_s),
                pair(u"X-Alpha"_s, u""_s), pair(u"Content-Length"_s, QString::number(body.size())),
                pair(u"Connection"_s, u"close"_s)}));
        const QJsonObject get = log[1].toObject();
        QCOMPARE(get[u"sequence"_s].toInt(), 2);
        QCOMPARE(get[u"method"_s].toString(), u"GET"_s);
        QCOMPARE(get[u"path"_s].toString(), u"/v1/none?x=%41"_s);
        QVERIFY(get[u"monotonic_seconds"_s].toDouble() >= post[u"monotonic_seconds"_s].toDouble());
        const std::chrono::duration<double> now =
            std::chrono::steady_clock::now().time_since_epoch();
        QVERIFY(get[u"monotonic_seconds"_s].toDouble() <= now.count());
        QVERIFY(get[u"monotonic_seconds"_s].toDouble() > now.count() - 60);
    }

    void clearsTheLogAndCountsOn() {
        const SimFixture fixture;
        QCOMPARE(fixture.get(health).status(), 200);
        QCOMPARE(exchange(fixture.port(), rawRequest("DELETE", "/sim/requests")).status(), 200);
        QCOMPARE(fixture.log().size(), 0);
        QCOMPARE(fixture.get(health).status(), 200);
        QCOMPARE(fixture.log().size(), 1);
        QCOMPARE(fixture.log()[0][u"sequence"_s].toInt(), 2);
    }

    void servesManyAtOnce() {
        const SimFixture fixture;
        constexpr int clients = 8;
        constexpr int rounds = 15;
        std::atomic<int> good = 0;
        std::vector<std::thread> threads;
        threads.reserve(clients);
        for (int client = 0; client < clients; ++client) {
            threads.emplace_back([&, client] {
                for (int round = 0; round < rounds; ++round) {
                    const auto answer =
                        client % 2 == 0
                            ? fixture.get(health)
                            : fixture.post(
                                services, round % 2 == 0 ? R"({"deep_scan_enabled":false})"
                                                         : R"({"deep_scan_enabled":true})");
                    good += answer.status() == 200 ? 1 : 0;
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QCOMPARE(good.load(), clients * rounds);
        QCOMPARE(fixture.log().size(), clients * rounds);
    }
};

VESK_TEST(WorkerSimHttpTest)
#include "WorkerSimHttpTest.moc"

#include "tests/TestProgram.h"
#include "tests/tools/SimFixture.h"

#include <QElapsedTimer>
#include <QTest>

#include <chrono>
#include <future>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using vesk::Ending;
using vesk::exchange;
using vesk::rawRequest;
using vesk::SimFixture;

namespace {

const QByteArray health = "/v1/health";
const QByteArray diagnostics = "/v1/diagnostics";
const QByteArray services = "/v1/local/services";
const QByteArray performance = "/v1/local/performance";
const QByteArray pauseJobs = R"({"deep_scan_enabled":false})";
const QByteArray quiet = R"({"mode":"quiet"})";

bool accepting(const QJsonObject& document) {
    return document[u"deep_scan_enabled"_s] == QJsonValue(true);
}

QString mode(const QJsonObject& document) {
    return document[u"activity_policy"_s][u"performance_mode"_s].toString();
}

} // namespace

class WorkerSimServiceTest : public QObject {
    Q_OBJECT

private slots:
    void answersOneRequestAConnection() {
        const SimFixture fixture;
        const auto answer = exchange(fixture.port(), "GET " + health + " HTTP/1.1\r\n\r\n");
        QCOMPARE(answer.status(), 200);
        QCOMPARE(answer.ending, Ending::Closed);
        QCOMPARE(answer.header("Content-Type"), "application/json");
        QCOMPARE(answer.header("Content-Length").toLongLong(), answer.body().size());
        QVERIFY(accepting(SimFixture::document(answer)));
    }

    void changesAreKept() {
        const SimFixture fixture;
        QVERIFY(!accepting(SimFixture::document(fixture.post(services, pauseJobs))));
        QCOMPARE(mode(SimFixture::document(fixture.post(performance, quiet))), u"quiet"_s);
        QVERIFY(!accepting(fixture.health()));
        QCOMPARE(mode(fixture.health()), u"quiet"_s);
        QCOMPARE(fixture.post(services, R"({"deep_scan_enabled":true})").status(), 200);
        QVERIFY(accepting(fixture.health()));
    }

    void refusesBadRequests_data() {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<int>("status");
        const auto row = [](const QByteArray& method, const QByteArray& path, int status,
                            const QByteArray& body = {}) {
            QTest::addRow("%s %s %s", method.data(), path.data(), body.data())
                << rawRequest(method, path, body, {"content-type: application/json"}) << status;
        };
        row("GET", "/v1/nothing", 404);
        row("GET", "/v1/health/", 404);
        row("GET", "/", 404);
        row("PUT", "/sim/fault", 404);
        row("POST", "/sim/fault", 400, "[]");
        row("POST", "/sim/listener", 400, "{}");
        row("POST", health, 405);
        row("GET", services, 405);
        row("DELETE", performance, 405);
        for (const char* body :
             {"", "[true]", "{}", R"({"deep_scan_enabled":"true"})", R"({"deep_scan_enabled":1})",
              R"({"deep_scan_enabled":false,"mode":"quiet"})", R"({"mode":"quiet"})"}) {
            row("POST", services, 400, body);
        }
        for (const char* body :
             {R"({"mode":"Quiet"})", R"({"mode":1})", "{}", "{\"mode\":\"\xff\"}"}) {
            row("POST", performance, 400, body);
        }
        QTest::newRow("no content type") << rawRequest("POST", performance, quiet) << 400;
        QTest::newRow("no HTTP") << QByteArray("hello\r\n\r\n") << 400;
        QTest::newRow("no header") << QByteArray("GET /v1/health HTTP/1.1\r\nHost\r\n\r\n") << 400;
        QTest::newRow("no length")
            << QByteArray("POST / HTTP/1.1\r\nContent-Length: x\r\n\r\n") << 400;
        QTest::newRow("chunks") << QByteArray(
            "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n")
                                << 400;
        QTest::newRow("too large") << rawRequest("POST", services, QByteArray(1 << 20, ' ')) << 413;
    }

    void refusesBadRequests() {
        QFETCH(const QByteArray, request);
        const SimFixture fixture;
        const auto answer = exchange(fixture.port(), request);
        QTEST(answer.status(), "status");
        QVERIFY(!SimFixture::document(answer)[u"error"_s].toString().isEmpty());
        QVERIFY(accepting(fixture.health()));
        QCOMPARE(mode(fixture.health()), u"automatic"_s);
    }

    void wantsTheToken() {
        const SimFixture fixture("s3cret");
        const auto status = [&](const QByteArray& header) {
            const auto request =
                rawRequest("POST", services, pauseJobs, {"Content-Type: application/json", header});
            return exchange(fixture.port(), request).status();
        };
        QCOMPARE(fixture.get(health).status(), 401);
        QCOMPARE(status("Authorization: s3cret"), 401);
        QCOMPARE(status("Authorization: Bearer s3cret2"), 401);
        const QByteArray good = "Authorization: Bearer s3cret";
        const auto answer = exchange(fixture.port(), rawRequest("GET", health, {}, {good}));
        QVERIFY(accepting(SimFixture::document(answer)));
        QCOMPARE(status(good), 200);
    }

    void answersWithTheFault_data() {
        QTest::addColumn<QByteArray>("fault");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body"); // in the middle of it; empty: a whole document
        QTest::addColumn<bool>("isCarriedOut");
        const auto row = [](const QByteArray& fault, int status, const QByteArray& body,
                            bool isCarriedOut) {
            QTest::newRow(fault) << fault << status << body << isCarriedOut;
        };
        for (const int status : {201, 204, 301, 401, 503, 999}) {
            row("{\"status\":" + QByteArray::number(status) + "}", status, "", false);
        }
        row(R"({"redirect":"/x"})", 302, "", false);
        row(R"({"body":"<html>"})", 200, "<html>", true);
        row(R"({"size":20000})", 200, QByteArray(15'000, ' '), true);
        row(R"({"body":"no","status":500})", 500, "no", false);
        row(R"({"body":"0123456","truncate":true})", 200, "012", true);
        row(R"({"patch":{"model":7,"slots":[1]}})", 200, R"("model":7,"services":)", true);
        row(R"({"patch":{"activity_policy":{"reason":"x"}}})", 200, R"("reason":"x")", true);
        row(R"({"opposite":true})", 200, "", false);
        row(R"({"hang_up":true})", 0, "", true);
        row(R"({"reset":true,"late":0.1})", 0, "", true);
        row(R"({"raw":"SSH-2.0-x\r\n\u0000"})", 0, "", true);
    }

    void answersWithTheFault() {
        QFETCH(const QByteArray, fault);
        QFETCH(const int, status);
        QFETCH(const QByteArray, body);
        const SimFixture fixture;
        QVERIFY(fixture.arm("{\"path\":\"services\",\"count\":1," + fault.mid(1)));
        QVERIFY(accepting(fixture.health())); // which is another path
        const auto answer = fixture.post(services, pauseJobs);
        QCOMPARE(answer.ending, fault.contains("reset") ? Ending::Reset : Ending::Closed);
        QCOMPARE(answer.status(), status);
        if (status == 0) {
            QCOMPARE(answer.bytes, fault.contains("raw") ? QByteArray("SSH-2.0-x\r\n\0", 12) : "");
        } else if (body.isEmpty()) {
            QVERIFY(SimFixture::document(answer).contains(u"deep_scan_enabled"_s));
        } else {
            QVERIFY(answer.body().contains(body));
        }
        QCOMPARE(answer.header("Location").isEmpty(), !fault.contains("redirect"));
        const bool cut = answer.header("Content-Length").toLongLong() > answer.body().size();
        QCOMPARE(cut, fault.contains("truncate"));
        QTEST(!accepting(fixture.health()), "isCarriedOut");
        // It was for one request.
        QVERIFY(!accepting(SimFixture::document(fixture.post(services, pauseJobs))));
        QCOMPARE(fixture.log()[1][u"body"_s].toString().toUtf8(), pauseJobs);
    }

    void manyMayBeLateAndNoOtherWaits() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"late":30,"path":"health","count":29})"));
        QVERIFY(fixture.arm(R"({"late":0.5,"path":"health"})"));
        std::vector<std::future<vesk::RawAnswer>> waiting;
        for (int client = 0; client < 30; ++client) {
            waiting.push_back(std::async(std::launch::async, [&] {
                return exchange(fixture.port(), rawRequest("GET", health), 2s);
            }));
        }
        QTRY_COMPARE(fixture.log().size(), 30);
        QCOMPARE(fixture.get(diagnostics).status(), 200);
        int answered = 0;
        for (auto& client : waiting) {
            const auto answer = client.get();
            answered += answer.status() == 200 && answer.untilFirstByte >= 500ms ? 1 : 0;
        }
        QCOMPARE(answered, 1);
    }

    void faultsAreListedAndCleared() {
        const SimFixture fixture;
        const QByteArray fault =
            R"({"body":"x","count":3,"hang_up":false,"late":1.0,"opposite":true,"patch":{"a":1},)"
            R"("path":"health","raw":"r","redirect":"/","reset":false,"size":9,"status":500,)"
            R"("truncate":true})";
        QCOMPARE(fixture.post("/sim/fault", fault).body(), '[' + fault + ']');
        QVERIFY(fixture.arm(R"({"path":"diagnostics","status":503,"count":2})"));
        QCOMPARE(fixture.get(diagnostics).status(), 503);
        QVERIFY(fixture.get("/sim/fault")
                    .body()
                    .endsWith(R"(,{"count":1,"path":"diagnostics","status":503}])"));
        QCOMPARE(exchange(fixture.port(), rawRequest("DELETE", "/sim/fault")).body(), "[]");
        QCOMPARE(fixture.get(diagnostics).status(), 200);
    }

    void everyRequestIsLogged() {
        const SimFixture fixture;
        const auto request = rawRequest(
            "POST", services, pauseJobs,
            {"X-Zulu: 1", "content-type:application/json", "X-Alpha:"});
        QCOMPARE(exchange(fixture.port(), request).status(), 200);
        QCOMPARE(fixture.get("/v1/none?x=%41").status(), 404);
        const QJsonArray log = fixture.log();
        QCOMPARE(log.size(), 2);
        QCOMPARE(log[0][u"sequence"_s].toInt(), 1);
        QCOMPARE(log[0][u"method"_s].toString(), u"POST"_s);
        QCOMPARE(log[0][u"body"_s].toString().toUtf8(), pauseJobs);
        const QByteArray headers =
            QJsonDocument(log[0][u"headers"_s].toArray()).toJson(QJsonDocument::Compact);
        QCOMPARE(
            headers, R"([["Host","127.0.0.1"],["X-Zulu","1"],["content-type","application/json"],)"
                     R"(["X-Alpha",""],["Content-Length","27"],["Connection","close"]])");
        QCOMPARE(log[1][u"path"_s].toString(), u"/v1/none?x=%41"_s);
        const std::chrono::duration<double> now =
            std::chrono::steady_clock::now().time_since_epoch();
        const double received = log[1][u"monotonic_seconds"_s].toDouble();
        QVERIFY(received <= now.count() && received > now.count() - 60);

        QCOMPARE(exchange(fixture.port(), rawRequest("DELETE", "/sim/requests")).body(), "[]");
        QCOMPARE(fixture.get(health).status(), 200);
        QCOMPARE(fixture.log()[0][u"sequence"_s].toInt(), 3);
    }

    void closedListenerRefusesAndCutsAndComesBackAsItWas() {
        const SimFixture fixture;
        QCOMPARE(fixture.post(services, pauseJobs).status(), 200);
        QVERIFY(fixture.arm(R"({"late":60,"count":1})"));
        auto late = std::async(std::launch::async, [&] { return fixture.get(health); });
        QTRY_COMPARE(fixture.log().size(), 2);
        const auto start = std::chrono::steady_clock::now();
        QCOMPARE(fixture.post("/sim/listener", R"({"closed_seconds":1})").status(), 200);
        QCOMPARE(fixture.get(health).ending, Ending::Refused);
        const auto cut = late.get();
        QCOMPARE(cut.bytes, QByteArray());
        QVERIFY(cut.ending != Ending::TimedOut);
        QTRY_COMPARE(fixture.get(health).status(), 200);
        QVERIFY(std::chrono::steady_clock::now() - start >= 1s);
        QVERIFY(!accepting(fixture.health()));
    }

    void restartedServiceBeginsAgainWithFaultsAndLog() {
        const SimFixture fixture;
        QCOMPARE(fixture.post(services, pauseJobs).status(), 200);
        QCOMPARE(fixture.post(performance, quiet).status(), 200);
        QVERIFY(fixture.arm(R"({"path":"diagnostics","status":500})"));
        const QByteArray order = R"({"closed_seconds":0.1,"restart":true})";
        QCOMPARE(fixture.post("/sim/listener", order).status(), 200);
        QTRY_COMPARE(fixture.get(diagnostics).status(), 500);
        QVERIFY(accepting(fixture.health()));
        QCOMPARE(mode(fixture.health()), u"automatic"_s);
        QVERIFY(fixture.log().size() >= 5);
    }

    void scenarioIsPlayedInItsTime() {
        QElapsedTimer clock;
        clock.start();
        const auto scenario = vesk::sim::scenarioFromText(R"([
            {"at": 0, "fault": {"path": "health", "status": 500}},
            {"at": 0, "clear_faults": true},
            {"at": 0, "fault": {"path": "health", "status": 503}},
            {"at": 2, "clear_faults": true},
            {"at": 2, "fault": {"path": "health", "status": 401}},
            {"at": 4, "listener": {"closed_seconds": 1}},
            {"at": 4, "clear_faults": true}])");
        const SimFixture fixture({}, std::get<vesk::sim::Scenario>(scenario));
        const auto status = [&] { return fixture.get(health).status(); };
        QCOMPARE(status(), 503);
        QTRY_COMPARE(status(), 401);
        QVERIFY(clock.elapsed() >= 2000);
        QTRY_COMPARE(fixture.get(health).ending, Ending::Refused);
        QVERIFY(clock.elapsed() >= 4000);
        QTRY_COMPARE(status(), 200);
        QVERIFY(clock.elapsed() >= 5000);
    }

    void stopsAtOnce() {
        SimFixture waiting;
        QVERIFY(waiting.arm(R"({"late":60})"));
        auto client = std::async(std::launch::async, [&] { return waiting.get(health); });
        QTRY_COMPARE(waiting.log().size(), 1);
        SimFixture closed;
        QCOMPARE(closed.post("/sim/listener", R"({"closed_seconds":60})").status(), 200);
        const auto start = std::chrono::steady_clock::now();
        waiting.stop();
        closed.stop();
        QVERIFY(std::chrono::steady_clock::now() - start < 5s);
        QCOMPARE(client.get().bytes, QByteArray());
        QCOMPARE(waiting.get(health).ending, Ending::Refused);
    }
};

VESK_TEST(WorkerSimServiceTest)
#include "WorkerSimServiceTest.moc"

#include "tests/TestProgram.h"
#include "tests/tools/SimFixture.h"

#include <QTest>

#include <chrono>
#include <future>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using vesk::Ending;
using vesk::exchange;
using vesk::rawRequest;
using vesk::SimFixture;

namespace {

const QByteArray health = "/v1/health";
const QByteArray services = "/v1/local/services";

/// Asks until the answer has that ending; gives up after ten seconds.
bool becomes(int port, Ending ending) {
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < 10s) {
        if (exchange(port, rawRequest("GET", health)).ending == ending) {
            return true;
        }
    }
    return false;
}

/// The answer to a request that does not ask for the connection to be closed.
vesk::RawAnswer askedToStayOpen(int port) {
    return exchange(port, "GET " + health + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n", 3s);
}

int completedJobs(const vesk::RawAnswer& answer) {
    int completed = 0;
    for (const QJsonValue& bay : SimFixture::document(answer)[u"slots"_s].toArray()) {
        completed += bay[u"completed"_s].toInt();
    }
    return completed;
}

} // namespace

class WorkerSimFaultTest : public QObject {
    Q_OBJECT

private slots:
    void answersLateAndNobodyElseWaits() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"late":3,"count":1})"));
        auto late = std::async(std::launch::async, [&] { return fixture.get(health); });
        // The log tells when the late request has been read.
        QTRY_COMPARE(fixture.log().size(), 1);
        QCOMPARE(fixture.get(health).status(), 200);
        QVERIFY(late.wait_for(0s) == std::future_status::timeout);
        const auto answer = late.get();
        QCOMPARE(answer.status(), 200);
        QVERIFY(answer.untilFirstByte >= 3s);
    }

    void manyMayBeLateAtOnce() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"late":30,"path":"health"})"));
        constexpr int clients = 30;
        std::vector<std::future<vesk::RawAnswer>> waiting;
        waiting.reserve(clients);
        for (int client = 0; client < clients; ++client) {
            waiting.push_back(std::async(std::launch::async, [&] {
                return exchange(fixture.port(), rawRequest("GET", health), 100ms);
            }));
        }
        for (auto& client : waiting) {
            QCOMPARE(client.get().ending, Ending::TimedOut);
        }
        QCOMPARE(fixture.get("/v1/diagnostics").status(), 200);
    }

    void dripsTheBody() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"drip":0.05,"body":"0123456789"})"));
        const auto answer = fixture.get(health);
        QCOMPARE(answer.status(), 200);
        QCOMPARE(answer.body(), "0123456789");
        QVERIFY(answer.untilEnd >= 500ms);
        QVERIFY(answer.untilFirstByte < answer.untilEnd - 400ms);
        QVERIFY(answer.pieces.size() >= 3);
    }

    void dripsTheHead() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"drip_head":0.005})"));
        const auto answer = fixture.get(health);
        QVERIFY(SimFixture::document(answer).contains(u"deep_scan_enabled"_s));
        const auto head = answer.bytes.size() - answer.body().size();
        QVERIFY(answer.untilEnd >= head * 5ms);
        QVERIFY(answer.pieces.size() >= 3);
    }

    void stallsInTheMiddleOfTheBody() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"stall":60,"body":"0123456789","count":1})"));
        const auto stalled = exchange(fixture.port(), rawRequest("GET", health), 1s);
        QCOMPARE(stalled.ending, Ending::TimedOut);
        QCOMPARE(stalled.header("Content-Length"), "10");
        QCOMPARE(stalled.body(), "01234");

        QVERIFY(fixture.arm(R"({"stall":0.3,"body":"0123456789"})"));
        const auto late = fixture.get(health);
        QCOMPARE(late.body(), "0123456789");
        QVERIFY(late.untilEnd >= 300ms);
        QVERIFY(late.untilFirstByte < late.untilEnd - 200ms);
    }

    void leavesTheRequestUnread() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"unread":60})"));
        const auto request = rawRequest(
            "POST", services, R"({"deep_scan_enabled":false})", {"Content-Type: application/json"});
        const auto answer = exchange(fixture.port(), request, 300ms);
        QCOMPARE(answer.ending, Ending::TimedOut);
        QCOMPARE(answer.bytes, QByteArray());
        QCOMPARE(fixture.get("/sim/requests").body(), "[]");
        QCOMPARE(exchange(fixture.port(), rawRequest("DELETE", "/sim/fault")).status(), 200);
        const auto document = SimFixture::document(fixture.get(health));
        QCOMPARE(document[u"deep_scan_enabled"_s], QJsonValue(true));
    }

    void resetsWhatItLeftUnread() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"unread":0.3,"count":1,"skip":1})"));
        QCOMPARE(fixture.get(health).status(), 200);
        const auto answer = fixture.get(health);
        QCOMPARE(answer.ending, Ending::Reset);
        QCOMPARE(answer.bytes, QByteArray());
        QVERIFY(answer.untilEnd >= 300ms);
        QCOMPARE(fixture.get(health).status(), 200);
        QCOMPARE(fixture.log().size(), 2);
    }

    void sendsBytesThatAreNoHttp() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"raw":"SSH-2.0-x\r\n\u0000"})"));
        const auto answer = fixture.get(health);
        QCOMPARE(answer.bytes, QByteArray("SSH-2.0-x\r\n\0", 12));
        QCOMPARE(answer.ending, Ending::Closed);
    }

    void fillsUpTheHead() {
        const SimFixture fixture;
        for (const qsizetype size : {qsizetype{64} * 1024, qsizetype{1024} * 1024}) {
            const QByteArray fault = QByteArray(R"({"count":1,"head_size":HERE})")
                                         .replace("HERE", QByteArray::number(size));
            QVERIFY(fixture.arm(fault));
            const auto answer = fixture.get(health);
            QCOMPARE(answer.bytes.size() - answer.body().size(), size);
            QVERIFY(SimFixture::document(answer).contains(u"deep_scan_enabled"_s));
        }
        QVERIFY(fixture.arm(R"({"count":1,"head_size":1})"));
        QVERIFY(!fixture.get(health).bytes.contains("X-Padding"));
    }

    void tellsAnotherLength_data() {
        QTest::addColumn<QByteArray>("length");
        QTest::newRow("none") << QByteArray("0");
        QTest::newRow("shorter") << QByteArray("3");
        QTest::newRow("longer") << QByteArray("1000");
    }

    void tellsAnotherLength() {
        QFETCH(const QByteArray, length);
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"body":"0123456789","length":)" + length + "}"));
        const auto answer = askedToStayOpen(fixture.port());
        QCOMPARE(answer.bytes.count("Content-Length: "), 1);
        QCOMPARE(answer.header("Content-Length"), length);
        QCOMPARE(answer.body(), "0123456789");
        QCOMPARE(answer.ending, Ending::Closed);
    }

    void sendsChunks() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"framing":"chunked","body":"0","size":1010})"));
        const auto answer = fixture.get(health);
        QCOMPARE(answer.header("Transfer-Encoding"), "chunked");
        QVERIFY(!answer.bytes.contains("Content-Length"));
        const QByteArray blanks(500, ' ');
        QCOMPARE(
            answer.body(), "1f4\r\n0" + blanks.first(499) + "\r\n1f4\r\n" + blanks + "\r\na\r\n"
                               + blanks.first(10) + "\r\n0\r\n\r\n");
    }

    void endsTheBodyWithTheConnection() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"framing":"close","body":"0123456789"})"));
        const auto answer = askedToStayOpen(fixture.port());
        QVERIFY(!answer.bytes.contains("Content-Length"));
        QVERIFY(!answer.bytes.contains("Transfer-Encoding"));
        QCOMPARE(answer.body(), "0123456789");
        QCOMPARE(answer.ending, Ending::Closed);
    }

    void givesNoAnswer_data() {
        QTest::addColumn<QByteArray>("fault");
        QTest::addColumn<Ending>("ending");
        QTest::newRow("reset") << QByteArray(R"({"reset":true,"count":1})") << Ending::Reset;
        QTest::newRow("hang up") << QByteArray(R"({"hang_up":true,"count":1})") << Ending::Closed;
        QTest::newRow("late reset")
            << QByteArray(R"({"reset":true,"late":0.2,"count":1})") << Ending::Reset;
    }

    void givesNoAnswer() {
        QFETCH(QByteArray, fault);
        QFETCH(Ending, ending);
        const SimFixture fixture;
        QVERIFY(fixture.arm(fault));
        const QByteArray body = R"({"deep_scan_enabled":false})";
        const auto answer = fixture.post(services, body);
        QCOMPARE(answer.ending, ending);
        QCOMPARE(answer.bytes, QByteArray());

        const auto document = SimFixture::document(fixture.get(health));
        QCOMPARE(document[u"deep_scan_enabled"_s], QJsonValue(false));
        const QJsonArray log = fixture.log();
        QCOMPARE(log.size(), 2);
        QCOMPARE(log[0][u"method"_s].toString(), u"POST"_s);
        QCOMPARE(log[0][u"body"_s].toString().toUtf8(), body);
    }

    void truncatesTheBody() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"truncate":true})"));
        const auto answer = fixture.get(health);
        QCOMPARE(answer.status(), 200);
        QCOMPARE(answer.ending, Ending::Closed);
        QCOMPARE(answer.body().size(), answer.header("Content-Length").toLongLong() / 2);
        QVERIFY(answer.body().size() > 100);
    }

    void answersWithAnotherStatus_data() {
        QTest::addColumn<int>("status");
        for (const int status : {201, 204, 206, 301, 400, 401, 404, 500, 503, 999}) {
            QTest::addRow("%d", status) << status;
        }
    }

    void answersWithAnotherStatus() {
        QFETCH(int, status);
        const SimFixture fixture;
        const QByteArray fault =
            QByteArray(R"({"count":1,"status":HERE})").replace("HERE", QByteArray::number(status));
        QVERIFY(fixture.arm(fault));
        const auto answer = fixture.post(services, R"({"deep_scan_enabled":false})");
        QCOMPARE(answer.status(), status);
        QCOMPARE(answer.header("Content-Type"), "application/json");
        QVERIFY(SimFixture::document(answer).contains(u"deep_scan_enabled"_s));
        // Refused means that nothing was changed.
        const auto document = SimFixture::document(fixture.get(health));
        QCOMPARE(document[u"deep_scan_enabled"_s], QJsonValue(true));
    }

    void isDoneButAnsweredWithAnError_data() {
        QTest::addColumn<QByteArray>("fault");
        QTest::addColumn<int>("status");
        QTest::newRow("status") << QByteArray(R"({"count":1,"status":500,"done":true})") << 500;
        QTest::newRow("redirect") << QByteArray(R"({"count":1,"redirect":"/","done":true})") << 302;
    }

    void isDoneButAnsweredWithAnError() {
        QFETCH(const QByteArray, fault);
        QFETCH(const int, status);
        const SimFixture fixture;
        QVERIFY(fixture.arm(fault));
        QCOMPARE(fixture.post(services, R"({"deep_scan_enabled":false})").status(), status);
        const auto document = SimFixture::document(fixture.get(health));
        QCOMPARE(document[u"deep_scan_enabled"_s], QJsonValue(false));
    }

    void redirects() {
        const SimFixture fixture;
        const QByteArray target = "http://127.0.0.1:9/v1/health";
        const QByteArray fault =
            QByteArray(R"({"count":1,"redirect":"HERE"})").replace("HERE", target);
        QVERIFY(fixture.arm(fault));
        const auto answer = fixture.get(health);
        QCOMPARE(answer.status(), 302);
        QCOMPARE(answer.header("Location"), target);
        QCOMPARE(fixture.get(health).status(), 200);
    }

    void sendsAnyBody_data() {
        QTest::addColumn<QByteArray>("fault");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("empty") << QByteArray(R"({"body":""})") << QByteArray();
        QTest::newRow("garbage") << QByteArray(R"({"body":"<html>"})") << QByteArray("<html>");
        QTest::newRow("array") << QByteArray(R"({"body":"[{}]"})") << QByteArray("[{}]");
        QTest::newRow("error page")
            << QByteArray(R"({"body":"no","status":500})") << QByteArray("no");
    }

    void sendsAnyBody() {
        QFETCH(QByteArray, fault);
        QFETCH(QByteArray, body);
        const SimFixture fixture;
        QVERIFY(fixture.arm(fault));
        QCOMPARE(fixture.get(health).body(), body);
    }

    void fillsUpToASize() {
        const SimFixture fixture;
        constexpr qsizetype limit = qsizetype{16} * 1024 * 1024;
        for (const qsizetype size : {limit, limit + 1}) {
            const QByteArray fault =
                QByteArray(R"({"count":1,"size":HERE})").replace("HERE", QByteArray::number(size));
            QVERIFY(fixture.arm(fault));
            const auto answer = fixture.get(health);
            QCOMPARE(answer.body().size(), size);
            QVERIFY(SimFixture::document(answer).contains(u"deep_scan_enabled"_s));
        }
        QVERIFY(fixture.arm(R"({"count":1,"size":1})"));
        QVERIFY(fixture.get(health).body().size() > 1);
    }

    void patchesTheDocument() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(
            R"({"path":"health","patch":{"deep_scan_enabled":"yes","slots":[1],"model":null,)"
            R"("activity_policy":{"reason":7}}})"));
        const auto document = SimFixture::document(fixture.get(health));
        QCOMPARE(document[u"deep_scan_enabled"_s], QJsonValue(u"yes"_s));
        QCOMPARE(document[u"slots"_s], QJsonValue(QJsonArray{1}));
        QVERIFY(!document.contains(u"model"_s));
        QCOMPARE(document[u"activity_policy"_s][u"reason"_s], QJsonValue(7));
        QCOMPARE(document[u"activity_policy"_s][u"performance_mode"_s], QJsonValue(u"automatic"_s));
    }

    void overridesDiagnostics() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"path":"diagnostics","patch":{"backend":{"model_ready":false}}})"));
        QCOMPARE(
            fixture.get("/v1/diagnostics").body(),
            R"({"backend":{"model_ready":false,"reachable":true}})");
        QVERIFY(!SimFixture::document(fixture.get(health)).contains(u"backend"_s));
    }

    void confirmsTheOpposite() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"path":"services","opposite":true,"count":1})"));
        const auto answer = fixture.post(services, R"({"deep_scan_enabled":false})");
        QCOMPARE(SimFixture::document(answer)[u"deep_scan_enabled"_s], QJsonValue(true));
        QCOMPARE(
            SimFixture::document(fixture.get(health))[u"deep_scan_enabled"_s], QJsonValue(true));
        const auto second = fixture.post(services, R"({"deep_scan_enabled":false})");
        QCOMPARE(SimFixture::document(second)[u"deep_scan_enabled"_s], QJsonValue(false));
    }

    void isLimitedToAPathAndACount() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"path":"health","status":500,"count":2})"));
        QVERIFY(fixture.arm(R"({"path":"health","status":503,"count":1})"));
        QCOMPARE(fixture.get("/v1/diagnostics").status(), 200);
        QCOMPARE(fixture.get(health).status(), 500);
        QCOMPARE(
            fixture.get("/sim/fault").body(),
            R"([{"count":1,"path":"health","status":500},{"count":1,"path":"health","status":503}])");
        QCOMPARE(fixture.get(health).status(), 500);
        QCOMPARE(fixture.get(health).status(), 503);
        QCOMPARE(fixture.get(health).status(), 200);
        QCOMPARE(fixture.get("/sim/fault").body(), "[]");
    }

    void skipsTheFirst() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"path":"health","status":500,"skip":2,"count":1})"));
        QVERIFY(fixture.arm(R"({"path":"health","status":503,"count":1})"));
        QCOMPARE(fixture.get("/v1/diagnostics").status(), 200);
        // What one passes by meets the next.
        QCOMPARE(fixture.get(health).status(), 503);
        QCOMPARE(
            fixture.get("/sim/fault").body(),
            R"([{"count":1,"path":"health","skip":1,"status":500}])");
        QCOMPARE(fixture.get(health).status(), 200);
        QCOMPARE(fixture.get(health).status(), 500);
        QCOMPARE(fixture.get(health).status(), 200);
    }

    void isClearedWithOneCall() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"reset":true})"));
        QVERIFY(fixture.arm(R"({"status":500})"));
        const auto cleared = exchange(fixture.port(), rawRequest("DELETE", "/sim/fault"));
        QCOMPARE(cleared.body(), "[]");
        QCOMPARE(fixture.get(health).status(), 200);
    }

    void listsWhatItWasGiven() {
        const SimFixture fixture;
        const QByteArray fault =
            R"({"body":"x","count":3,"done":true,"drip":0.5,"drip_head":0.25,"framing":"close",)"
            R"("hang_up":true,"head_size":7,"late":1.0,"length":2,"opposite":true,)"
            R"("patch":{"a":1},"path":"health","raw":"r","redirect":"/","reset":true,"size":9,)"
            R"("skip":4,"stall":2.5,"status":500,"truncate":true,"unread":3.5})";
        QCOMPARE(fixture.post("/sim/fault", fault).body(), '[' + fault + ']');
    }

    void refusesBadFaults_data() {
        QTest::addColumn<QByteArray>("fault");
        QTest::addColumn<QString>("error");
        const auto row = [](const char* fault, const char* error) {
            QTest::newRow(fault) << QByteArray(fault) << QString::fromLatin1(error);
        };
        row("", "a fault is a JSON object");
        row("[]", "a fault is a JSON object");
        row(R"({"sleep":1})", "there is a key that no fault has");
        row(R"({"path":"/v1/health"})",
            "path must be health, diagnostics, services or performance");
        row(R"({"path":1})", "path must be a text");
        row(R"({"count":0})", "count must be a whole number from 1 to 1000000");
        row(R"({"count":1.5})", "count must be a whole number from 1 to 1000000");
        row(R"({"skip":0})", "skip must be a whole number from 1 to 1000000");
        row(R"({"framing":"gzip"})", "framing must be chunked or close");
        row(R"({"length":-1})", "length must be a whole number from 0 to 268435456");
        row(R"({"head_size":268435457})", "head_size must be a whole number from 0 to 268435456");
        row(R"({"done":"yes"})", "done must be true or false");
        row(R"({"raw":7})", "raw must be a text");
        row(R"({"stall":3601})", "stall must be a number of seconds from 0 to 3600");
        row(R"({"unread":true})", "unread must be a number of seconds from 0 to 3600");
        row(R"({"drip_head":[]})", "drip_head must be a number of seconds from 0 to 3600");
        row(R"({"late":-1})", "late must be a number of seconds from 0 to 3600");
        row(R"({"drip":"1"})", "drip must be a number of seconds from 0 to 3600");
        row(R"({"reset":1})", "reset must be true or false");
        row(R"({"status":99})", "status must be a whole number from 100 to 999");
        row(R"({"status":18446744073709551615})", "status must be a whole number from 100 to 999");
        row(R"({"body":{}})", "body must be a text");
        row(R"({"patch":[]})", "patch must be an object");
        row(R"({"size":268435457})", "size must be a whole number from 0 to 268435456");
    }

    void refusesBadFaults() {
        QFETCH(QByteArray, fault);
        QFETCH(QString, error);
        const SimFixture fixture;
        const auto answer = fixture.post("/sim/fault", fault);
        QCOMPARE(answer.status(), 400);
        QCOMPARE(SimFixture::document(answer)[u"error"_s].toString(), error);
        QCOMPARE(fixture.get("/sim/fault").body(), "[]");
    }

    void closesTheListenerForAWhile() {
        const SimFixture fixture;
        const auto start = std::chrono::steady_clock::now();
        const auto closed = fixture.post("/sim/listener", R"({"closed_seconds":2})");
        QCOMPARE(closed.status(), 200);
        QCOMPARE(fixture.get(health).ending, Ending::Refused);
        QVERIFY(becomes(fixture.port(), Ending::Closed));
        QVERIFY(std::chrono::steady_clock::now() - start >= 2s);
        QCOMPARE(fixture.get(health).status(), 200);
    }

    void closingCutsWhatIsUnderWay() {
        const SimFixture fixture;
        QVERIFY(fixture.arm(R"({"late":60,"count":1})"));
        auto late = std::async(std::launch::async, [&] { return fixture.get(health); });
        QTRY_COMPARE(fixture.log().size(), 1);
        const auto closed = fixture.post("/sim/listener", R"({"closed_seconds":0.2})");
        QCOMPARE(closed.status(), 200);
        const auto answer = late.get();
        QCOMPARE(answer.bytes, QByteArray());
        QVERIFY(answer.ending != Ending::TimedOut);
        QVERIFY(becomes(fixture.port(), Ending::Closed));
    }

    void comesBackAsItWas() {
        const SimFixture fixture;
        QCOMPARE(fixture.post(services, R"({"deep_scan_enabled":false})").status(), 200);
        QCOMPARE(fixture.post("/sim/listener", R"({"closed_seconds":0.1})").status(), 200);
        QVERIFY(becomes(fixture.port(), Ending::Closed));
        QCOMPARE(
            SimFixture::document(fixture.get(health))[u"deep_scan_enabled"_s], QJsonValue(false));
    }

    void comesBackRestarted() {
        // At that speed 20 jobs take more than a second.
        const SimFixture fixture({}, 100);
        QCOMPARE(fixture.post(services, R"({"deep_scan_enabled":false})").status(), 200);
        QCOMPARE(fixture.post(services, R"({"deep_scan_enabled":true})").status(), 200);
        QTRY_VERIFY_WITH_TIMEOUT(completedJobs(fixture.get(health)) >= 20, 30'000);
        QCOMPARE(fixture.post(services, R"({"deep_scan_enabled":false})").status(), 200);
        QVERIFY(fixture.arm(R"({"path":"diagnostics","status":500})"));
        const auto before = fixture.log().size();

        const QByteArray order = R"({"closed_seconds":0.1,"restart":true})";
        QCOMPARE(fixture.post("/sim/listener", order).status(), 200);
        QVERIFY(becomes(fixture.port(), Ending::Closed));
        const auto answer = fixture.get(health);
        QVERIFY(completedJobs(answer) < 20);
        QCOMPARE(SimFixture::document(answer)[u"deep_scan_enabled"_s], QJsonValue(true));
        // What belongs to the test is still there.
        QVERIFY(fixture.log().size() > before);
        QCOMPARE(fixture.get("/v1/diagnostics").status(), 500);
    }

    void staysClosedOnABadTime_data() {
        QTest::addColumn<QByteArray>("body");
        for (const char* body :
             {"", "[]", "{}", R"({"closed_seconds":0})", R"({"closed_seconds":"1"})",
              R"({"closed_seconds":86401})", R"({"closed_seconds":1,"restart":1})"}) {
            QTest::newRow(body) << QByteArray(body);
        }
    }

    void staysClosedOnABadTime() {
        QFETCH(QByteArray, body);
        const SimFixture fixture;
        QCOMPARE(fixture.post("/sim/listener", body).status(), 400);
        QCOMPARE(fixture.get(health).status(), 200);
    }

    void stopsAtOnce_data() {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("order");
        for (const char* wait : {"unread", "late", "drip_head", "drip", "stall"}) {
            const auto order = QByteArray(R"({"count":1,"HERE":60})").replace("HERE", wait);
            QTest::newRow(wait) << QByteArray("/sim/fault") << order;
        }
        QTest::newRow("closed") << QByteArray("/sim/listener")
                                << QByteArray(R"({"closed_seconds":60})");
    }

    void stopsAtOnce() {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, order);
        SimFixture fixture;
        QCOMPARE(fixture.post(path, order).status(), 200);
        auto client = std::async(std::launch::async, [&] { return fixture.get(health); });
        if (path == "/sim/fault") {
            // It has met its request.
            QTRY_COMPARE(fixture.get(path).body(), "[]");
        }
        const auto start = std::chrono::steady_clock::now();
        fixture.service().stop();
        QVERIFY(std::chrono::steady_clock::now() - start < 5s);
        QVERIFY(client.get().ending != Ending::TimedOut);
        QCOMPARE(fixture.get(health).ending, Ending::Refused);
    }

    void stopsRightAfterTheStart() {
        for (int round = 0; round < 30; ++round) {
            SimFixture fixture;
            QVERIFY(fixture.port() > 0);
            fixture.service().stop();
            QCOMPARE(fixture.get(health).ending, Ending::Refused);
        }
    }
};

VESK_TEST(WorkerSimFaultTest)
#include "WorkerSimFaultTest.moc"

#include "tests/TestProgram.h"
#include "tests/service/HttpPeer.h"

#include "service/HealthReader.h"
#include "service/HttpSession.h"
#include "service/ServiceLog.h"
#include "tests/model/LogCapture.h"
#include "tests/tools/KeptPort.h"

#include <QRegularExpression>
#include <QTest>

#include <limits>
#include <new>

#include <sys/socket.h>

using namespace vesk;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Kind = ExchangeEnd::Kind;

const QByteArray goodBody = R"({"deep_scan_enabled": true, "device": "body-text"})";

void closeHard(QTcpSocket& socket) {
    const linger hard{1, 0};
    setsockopt(
        static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    socket.abort();
}

} // namespace

Q_DECLARE_METATYPE(HttpPeer::Script)

class ServiceLogTest : public QObject {
    Q_OBJECT

private:
    /// What is told of one exchange.
    QStringList told(const ServiceRequest& request) {
        const LogCapture log;
        HttpSession session;
        bool ended = false;
        session.send(request, this, readHealth, [&](const auto&) { ended = true; });
        if (!QTest::qWaitFor([&] { return ended; }, 10'000)) {
            QTest::qFail("the exchange did not end", __FILE__, __LINE__);
        }
        return log.lines();
    }

    /// The same without the time that it took.
    QStringList toldOf(const ServiceRequest& request) {
        return told(request).replaceInStrings(QRegularExpression(u" ms=\\d+$"_s), QString());
    }

    static QString lineFor(qint64 port, const QString& result) {
        return u"vesk.service: event=exchange method=GET port=%1 path=\"/v1/health\" result=%2"_s
            .arg(port)
            .arg(result);
    }

private slots:
    void cleanup() { qunsetenv("TESSALURE_WORKER_TOKEN"); }

    void linesSayWhatHappened_data() {
        QTest::addColumn<ExchangeEnd>("end");
        QTest::addColumn<QString>("said");
        QTest::newRow("good") << ExchangeEnd{.status = 200, .bytes = 17}
                              << u"result=good status=200 bytes=17"_s;
        QTest::newRow("status") << ExchangeEnd{.kind = Kind::BadStatus, .status = 503, .bytes = 0}
                                << u"result=bad-status status=503 bytes=0"_s;
        QTest::newRow("other") << ExchangeEnd{.kind = Kind::Failed, .error = "No \"way\"\n"}
                               << u"result=failed error=\"No \\\"way\\\"\\n\""_s;
        const QList<std::pair<Kind, const char*>> words{
            {Kind::BadPort, "bad-port"},
            {Kind::BadHeader, "bad-header"},
            {Kind::Refused, "refused"},
            {Kind::Late, "late"},
            {Kind::Closed, "closed"},
            {Kind::Reset, "reset"},
            {Kind::NotHttp, "not-http"},
            {Kind::HeadTooLarge, "head-too-large"},
            {Kind::BodyTooLarge, "body-too-large"},
            {Kind::NotJson, "not-json"},
            {Kind::WrongDocument, "wrong-document"},
            {Kind::NoMemory, "no-memory"}};
        for (const auto& [kind, word] : words) {
            QTest::newRow(word) << ExchangeEnd{.kind = kind}
                                << u"result="_s + QString::fromLatin1(word);
        }
    }

    void linesSayWhatHappened() {
        QFETCH(const ExchangeEnd, end);
        QFETCH(const QString, said);
        ServiceRequest post = postRequest(45835, "/v1/local/services", {{u"secret"_s, u"body"_s}});
        post.headers.append(ServiceRequest::Header{.name = "Authorization", .value = "Bearer abc"});
        QCOMPARE(
            exchangeLine(post, end, 12ms),
            u"event=exchange method=POST port=45835 path=\"/v1/local/services\" %1 ms=12"_s.arg(
                said));
    }

    void connectionHasStateBeforeAndAfter_data() {
        QTest::addColumn<Connection>("before");
        QTest::addColumn<Connection>("now");
        QTest::addColumn<QString>("facts");
        QTest::newRow("first answer") << Connection{} << Connection{.online = true}
                                      << u"state=connected was=checking misses=0 misses_before=0"_s;
        QTest::newRow("first miss")
            << Connection{.online = true} << Connection{.online = true, .misses = 1}
            << u"state=reconnecting was=connected misses=1 misses_before=0"_s;
        QTest::newRow("third miss")
            << Connection{.online = true, .misses = 2} << Connection{.misses = 3}
            << u"state=stopped was=reconnecting misses=3 misses_before=2"_s;
    }

    void connectionHasStateBeforeAndAfter() {
        QFETCH(const Connection, before);
        QFETCH(const Connection, now);
        QFETCH(const QString, facts);
        QCOMPARE(connectionLine(before, now), u"event=connection "_s + facts);
    }

    void eachCauseHasItsWord_data() {
        QTest::addColumn<HttpPeer::Script>("script");
        QTest::addColumn<QString>("result");
        const auto row = [](const char* name, const QByteArray& answer, const QString& result) {
            QTest::newRow(name) << HttpPeer::Script([answer](QTcpSocket& socket) {
                socket.write(answer);
                socket.disconnectFromHost();
            }) << result;
        };
        const auto bodyRow = [&row](const char* name, const QByteArray& body, const QString& word) {
            row(name, HttpPeer::response("200 OK", body),
                u"%1 status=200 bytes=%2"_s.arg(word).arg(body.size()));
        };
        const QByteArray chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
        bodyRow("good", goodBody, u"good"_s);
        row("status", HttpPeer::response("503 Service Unavailable", "{}"),
            u"bad-status status=503 bytes=2"_s);
        row("redirect", HttpPeer::response("302 Found", "{}", "Location: http://127.0.0.1/\r\n"),
            u"bad-status status=302 bytes=2"_s);
        row("closed at once", "", u"closed"_s);
        row("closed in the head", "HTTP/1.1 200 OK\r\nContent-", u"closed"_s);
        row("closed in the body", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}", u"closed"_s);
        row("closed in a chunk", chunked + "9\r\n{}", u"closed"_s);
        row("no HTTP", "220 mail ESMTP\r\n\r\n", u"not-http"_s);
        row("bad length", "HTTP/1.1 200 OK\r\nContent-Length: x\r\n\r\n", u"not-http"_s);
        row("bad chunk", chunked + "xyz\r\n{}\r\n", u"not-http"_s);
        row("large head", "HTTP/1.1 200 OK\r\nX: " + QByteArray(70'000, 'x') + "\r\n\r\n",
            u"head-too-large"_s);
        row("large body",
            "HTTP/1.1 200 OK\r\nContent-Length: "
                + QByteArray::number(HttpSession::maxAnswerBytes + 1) + "\r\n\r\n{}",
            u"body-too-large"_s);
        bodyRow("empty body", "", u"not-json"_s);
        bodyRow("HTML", "<html>body-text</html>", u"not-json"_s);
        bodyRow("JSON and more", goodBody + "x", u"not-json"_s);
        bodyRow("a list", "[" + goodBody + "]", u"wrong-document"_s);
        bodyRow("no switch", R"({"device": "body-text"})", u"wrong-document"_s);
        bodyRow("a switch of another type", R"({"deep_scan_enabled": "yes"})", u"wrong-document"_s);
        QTest::newRow("reset") << HttpPeer::Script(closeHard) << u"reset"_s;
        QTest::newRow("silence") << HttpPeer::Script([](QTcpSocket&) {}) << u"late"_s;
        QTest::newRow("half a body and silence") << HttpPeer::Script([](QTcpSocket& socket) {
            socket.write("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}");
        }) << u"late"_s;
    }

    void eachCauseHasItsWord() {
        QFETCH(const HttpPeer::Script, script);
        QFETCH(const QString, result);
        HttpPeer peer;
        peer.answerWith(script);
        qputenv("TESSALURE_WORKER_TOKEN", "token-text");
        ServiceRequest health = request(peer.serverPort(), "/v1/health");
        health.timeout = 1s;
        QCOMPARE(toldOf(health), QStringList{lineFor(peer.serverPort(), result)});
        QVERIFY(peer.requests().constFirst().head.contains("Bearer token-text\r\n"));
    }

    void refusedConnection() {
        const KeptPort port;
        QCOMPARE(
            toldOf(request(port.number(), "/v1/health")),
            QStringList{lineFor(port.number(), u"refused"_s)});
    }

    void whatIsNotSent() {
        QCOMPARE(toldOf(request(70000, "/v1/health")), QStringList{lineFor(70000, u"bad-port"_s)});
        qputenv("TESSALURE_WORKER_TOKEN", "token-text\r\nX: y");
        QCOMPARE(toldOf(request(9, "/v1/health")), QStringList{lineFor(9, u"bad-header"_s)});
    }

    void whatMemoryDoesNotHold() {
        HttpPeer peer;
        peer.answerWithJson("{}");
        const LogCapture log;
        HttpSession session;
        bool ended = false;
        session.send(
            request(peer.serverPort(), "/v1/health"), this,
            +[](const QByteArray&) -> std::optional<int> { throw std::bad_alloc(); },
            [&](const auto&) { ended = true; });
        QTRY_VERIFY(ended);
        QCOMPARE(log.lines().size(), 1);
        QVERIFY(log.lines().constFirst().contains(u" result=no-memory status=200 bytes=2 "));
    }

    void timeIsThatOfTheExchange() {
        HttpPeer peer;
        ServiceRequest health = request(peer.serverPort(), "/v1/health");
        health.timeout = 500ms;
        const QStringList lines = told(health);
        QCOMPARE(lines.size(), 1);
        const qint64 took = lines.constFirst().section(u" ms="_s, 1).toLongLong();
        QVERIFY2(took >= 450 && took < 5000, qPrintable(lines.constFirst()));
    }

    void silentUnlessAskedFor() {
        QVERIFY(!serviceLog().isDebugEnabled());
        const LogCapture log;
        QVERIFY(serviceLog().isDebugEnabled());
    }
};

VESK_TEST(ServiceLogTest)
#include "ServiceLogTest.moc"

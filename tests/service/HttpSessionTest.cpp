#include "tests/TestProgram.h"
#include "tests/service/HttpPeer.h"

#include "service/HttpSession.h"
#include "tests/tools/KeptPort.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <new>

#include <sys/socket.h>

#include <algorithm>

using namespace vesk;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

std::optional<QJsonObject> jsonObjectIn(const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

/// One exchange and its outcome.
struct Attempt {
    bool ended = false;
    int calls = 0;
    std::optional<QJsonObject> answer;

    void send(HttpSession& session, const ServiceRequest& request, QObject* receiver) {
        session.send(request, receiver, jsonObjectIn, [this](const auto& got) {
            ended = true;
            ++calls;
            answer = got;
        });
    }
};

void closeHard(QTcpSocket& socket) {
    const linger hard{1, 0};
    setsockopt(
        static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    socket.abort();
}

} // namespace

class HttpSessionTest : public QObject {
    Q_OBJECT

private:
    std::optional<QJsonObject> fetch(const ServiceRequest& request) {
        HttpSession session;
        Attempt exchange;
        exchange.send(session, request, this);
        if (!QTest::qWaitFor([&] { return exchange.ended; }, 10000)) {
            QTest::qFail("the exchange did not end", __FILE__, __LINE__);
        }
        return exchange.answer;
    }

    /// Whether the exchange fails, neither before the one nor after the other.
    bool failsWithin(
        const ServiceRequest& request, std::chrono::milliseconds least,
        std::chrono::milliseconds most) {
        QElapsedTimer clock;
        clock.start();
        const bool fails = !fetch(request);
        const std::chrono::milliseconds took(clock.elapsed());
        if (took < least || took >= most) {
            qWarning("it took %lld ms", static_cast<long long>(took.count()));
        }
        return fails && took >= least && took < most;
    }

    static ServiceRequest quick(ServiceRequest request, std::chrono::milliseconds timeout = 500ms) {
        request.timeout = timeout;
        return request;
    }

private slots:
    void init() { qunsetenv("TESSALURE_WORKER_TOKEN"); }
    void cleanup() {
        for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"}) {
            qunsetenv(name);
        }
        qunsetenv("TESSALURE_WORKER_TOKEN");
    }

    void givesTheJsonObject() {
        HttpPeer peer;
        peer.answerWithJson(R"({"deep_scan_enabled": true, "n": 9007199254740993})");
        const auto answer = fetch(request(peer.serverPort(), "/v1/health"));
        QVERIFY(answer);
        QCOMPARE(answer->value(u"n").toInteger(), 9007199254740993);
        QCOMPARE(peer.requests().size(), 1);
        QCOMPARE(
            peer.requests().constFirst().head,
            "GET /v1/health HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(peer.serverPort())
                + "\r\nConnection: close\r\nAccept: application/json\r\n\r\n");
    }

    void answersAreReadOffTheMainThread() {
        static const QThread* readOn = nullptr; // the exchange is over before it is looked at
        HttpPeer peer;
        peer.answerWithJson("{}");
        HttpSession session;
        bool told = false;
        session.send(
            request(peer.serverPort(), "/"), this,
            +[](const QByteArray& body) {
                readOn = QThread::currentThread();
                return std::optional(body);
            },
            [&](const std::optional<QByteArray>& body) {
                QCOMPARE(QThread::currentThread(), thread());
                QCOMPARE(body, std::optional("{}"_ba));
                told = true;
            });
        QTRY_VERIFY(told);
        QVERIFY(readOn != nullptr && readOn != thread());
    }

    void failures_data() {
        QTest::addColumn<QByteArray>("answer");
        const QByteArray good = R"({"deep_scan_enabled": true})";
        QTest::newRow("201") << HttpPeer::response("201 Created", good);
        QTest::newRow("202") << HttpPeer::response("202 Accepted", good);
        QTest::newRow("204") << QByteArray("HTTP/1.1 204 No Content\r\n\r\n");
        QTest::newRow("206") << HttpPeer::response("206 Partial Content", good);
        QTest::newRow("304") << QByteArray("HTTP/1.1 304 Not Modified\r\n\r\n");
        QTest::newRow("401") << HttpPeer::response("401 Unauthorized", good);
        QTest::newRow("404") << HttpPeer::response("404 Not Found", good);
        QTest::newRow("500") << HttpPeer::response("500 Internal Server Error", good);
        QTest::newRow("503") << HttpPeer::response("503 Service Unavailable", good);
        QTest::newRow("array") << HttpPeer::response("200 OK", "[" + good + "]");
        QTest::newRow("text") << HttpPeer::response("200 OK", "\"text\"");
        QTest::newRow("number") << HttpPeer::response("200 OK", "2");
        QTest::newRow("null") << HttpPeer::response("200 OK", "null");
        QTest::newRow("empty") << HttpPeer::response("200 OK", "");
        QTest::newRow("no JSON") << HttpPeer::response("200 OK", "<html>");
        QTest::newRow("JSON and more") << HttpPeer::response("200 OK", good + good);
        QTest::newRow("cut off") << QByteArray(
            "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n" + good);
        QTest::newRow("short length")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n" + good);
        QTest::newRow("cut chunk")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n40\r\n" + good);
        QTest::newRow("no HTTP") << QByteArray("hello\r\n\r\n");
        QTest::newRow("old HTTP") << good;
    }

    void failures() {
        QFETCH(const QByteArray, answer);
        HttpPeer peer;
        peer.answerWith([answer](QTcpSocket& socket) {
            socket.write(answer);
            socket.disconnectFromHost();
        });
        QVERIFY(!fetch(request(peer.serverPort(), "/v1/health")));
        QCOMPARE(peer.requests().size(), 1);
    }

    void chunkedAnswerIsGood() {
        HttpPeer peer;
        peer.answerWith([](QTcpSocket& socket) {
            socket.write("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                         "6\r\n{\"a\": \r\n2\r\n1}\r\n0\r\n\r\n");
        });
        QVERIFY(fetch(request(peer.serverPort(), "/v1/health")));
    }

    void interimAnswersAnnounceTheRealOne() {
        HttpPeer peer;
        peer.answerWith([](QTcpSocket& socket) {
            socket.write(
                "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n"
                + HttpPeer::response("200 OK", "{}"));
        });
        QVERIFY(fetch(request(peer.serverPort(), "/v1/health")));
    }

    void answerThatEndsWithTheConnectionIsGood() {
        HttpPeer peer;
        peer.answerWith([](QTcpSocket& socket) {
            socket.write("HTTP/1.1 200 OK\r\n\r\n{}");
            socket.disconnectFromHost();
        });
        QVERIFY(fetch(request(peer.serverPort(), "/v1/health")));
    }

    void headSizeIsBounded_data() {
        QTest::addColumn<qsizetype>("size");
        QTest::addColumn<bool>("good");
        constexpr qsizetype largest = qsizetype{64} * 1024;
        QTest::newRow("largest") << largest << true;
        QTest::newRow("one more") << largest + 1 << false;
        QTest::newRow("many times") << 10 * largest << false;
    }

    void headSizeIsBounded() {
        QFETCH(const qsizetype, size);
        QFETCH(const bool, good);
        QByteArray head = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n";
        const QByteArray end = "\r\n\r\n";
        const QByteArray line = "X-Padding: " + QByteArray(1000, 'x') + "\r\n";
        while (head.size() + line.size() < size - 100) {
            head += line;
        }
        head += "X-Rest: ";
        head += QByteArray(size - head.size() - end.size(), 'x') + end;
        QCOMPARE(head.size(), size);
        HttpPeer peer;
        peer.answerWith([head](QTcpSocket& socket) {
            // Little by little: all that has come in by then may be taken whole.
            auto* timer = new QTimer(&socket);
            connect(timer, &QTimer::timeout, &socket, [&socket, answer = head + "{}"]() mutable {
                constexpr qsizetype portion = 10'000;
                socket.write(answer.first(std::min(portion, answer.size())));
                answer.remove(0, portion);
                if (answer.isEmpty()) {
                    socket.disconnectFromHost();
                }
            });
            timer->start(1ms);
        });
        QCOMPARE(fetch(request(peer.serverPort(), "/v1/health")).has_value(), good);
    }

    void redirectIsAFailureAndNotFollowed() {
        HttpPeer other;
        other.answerWithJson("{}");
        HttpPeer peer;
        qputenv("TESSALURE_WORKER_TOKEN", "secret");
        const QByteArray location =
            "Location: http://127.0.0.1:" + QByteArray::number(other.serverPort()) + "/\r\n";
        peer.answerWith([location](QTcpSocket& socket) {
            socket.write(HttpPeer::response("302 Found", "{}", location));
        });
        QVERIFY(!fetch(request(peer.serverPort(), "/v1/health")));
        QCOMPARE(peer.requests().size(), 1);
        QCOMPARE(other.connections(), 0);
    }

    void proxyOfTheEnvironmentIsIgnored() {
        HttpPeer proxy;
        proxy.answerWithJson("[]");
        HttpPeer peer;
        peer.answerWithJson("{}");
        const QByteArray address = "http://127.0.0.1:" + QByteArray::number(proxy.serverPort());
        for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"}) {
            qputenv(name, address);
        }
        QVERIFY(fetch(request(peer.serverPort(), "/v1/health")));
        QCOMPARE(proxy.connections(), 0);
    }

    void dripDoesNotOutliveTheDeadline_data() {
        QTest::addColumn<QByteArray>("beginning");
        QTest::addColumn<QByteArray>("drop");
        const QByteArray status = "HTTP/1.1 200 OK\r\n";
        const QByteArray head = status + "Content-Length: 1000\r\n\r\n";
        QTest::newRow("head") << status + "X: " << QByteArray("x");
        QTest::newRow("body") << head << QByteArray(" ");
        QTest::newRow("stalled") << head + "{" << QByteArray();
    }

    void dripDoesNotOutliveTheDeadline() {
        QFETCH(const QByteArray, beginning);
        QFETCH(const QByteArray, drop);
        HttpPeer peer;
        peer.answerWith([beginning, drop](QTcpSocket& socket) {
            socket.write(beginning);
            auto* drip = new QTimer(&socket);
            connect(drip, &QTimer::timeout, &socket, [&socket, drop] { socket.write(drop); });
            drip->start(50ms);
        });
        QVERIFY(failsWithin(quick(request(peer.serverPort(), "/v1/health")), 450ms, 3s));
    }

    void silenceEndsAtTheDeadline() {
        HttpPeer peer;
        QCOMPARE(request(1, "/").timeout, 4000ms);
        QVERIFY(failsWithin(request(peer.serverPort(), "/v1/health"), 3900ms, 6s));
    }

    void unreadRequestEndsAtTheDeadline() {
        QTcpServer peer;
        QVERIFY(peer.listen(QHostAddress::LocalHost));
        peer.pauseAccepting();
        QVERIFY(failsWithin(quick(request(peer.serverPort(), "/v1/health")), 450ms, 3s));
    }

    void nothingIsSentTwice_data() {
        QTest::addColumn<bool>("post");
        QTest::addColumn<bool>("reset");
        QTest::newRow("GET, closed") << false << false;
        QTest::newRow("GET, reset") << false << true;
        QTest::newRow("POST, closed") << true << false;
        QTest::newRow("POST, reset") << true << true;
    }

    void nothingIsSentTwice() {
        QFETCH(const bool, post);
        QFETCH(const bool, reset);
        HttpPeer peer;
        HttpSession session;
        // A good exchange first, on a connection that the peer would keep.
        peer.answerWith(
            [](QTcpSocket& socket) { socket.write(HttpPeer::response("200 OK", "{}")); });
        Attempt first;
        first.send(session, request(peer.serverPort(), "/v1/health"), this);
        QTRY_VERIFY(first.ended);
        QVERIFY(first.answer);

        peer.answerWith([reset](QTcpSocket& socket) {
            if (reset) {
                closeHard(socket);
            } else {
                socket.disconnectFromHost();
            }
        });
        Attempt second;
        second.send(
            session,
            post ? postRequest(peer.serverPort(), "/v1/local/services", {{u"a"_s, true}})
                 : request(peer.serverPort(), "/v1/health"),
            this);
        QTRY_VERIFY(second.ended);
        QVERIFY(!second.answer);
        QCOMPARE(peer.requests().size(), 2);
        QCOMPARE(peer.connections(), 2);
    }

    void aConnectionClosedBetweenTwoPollsIsNoFailure() {
        HttpPeer peer;
        peer.answerWithJson("{}");
        HttpSession session;
        for (int poll = 0; poll < 5; ++poll) {
            Attempt exchange;
            exchange.send(session, request(peer.serverPort(), "/v1/health"), this);
            QTRY_VERIFY(exchange.ended);
            QVERIFY(exchange.answer);
        }
        QCOMPARE(peer.connections(), 5);
    }

    void postCarriesItsBody() {
        HttpPeer peer;
        peer.answerWithJson("{}");
        QVERIFY(fetch(postRequest(
            peer.serverPort(), "/v1/local/services", {{u"deep_scan_enabled"_s, true}})));
        const HttpPeer::Request& got = peer.requests().constFirst();
        QVERIFY(got.head.startsWith("POST /v1/local/services HTTP/1.1\r\n"));
        QVERIFY(got.head.contains("\r\nContent-Type: application/json\r\n"));
        QVERIFY(!got.head.contains("Expect"));
        QCOMPARE(got.body, R"({"deep_scan_enabled":true})");
    }

    void cookiesAreNotKept() {
        HttpPeer peer;
        peer.answerWith([](QTcpSocket& socket) {
            socket.write(HttpPeer::response("200 OK", "{}", "Set-Cookie: a=b\r\n"));
            socket.disconnectFromHost();
        });
        HttpSession session;
        for (int turn = 0; turn < 2; ++turn) {
            Attempt exchange;
            exchange.send(session, request(peer.serverPort(), "/v1/health"), this);
            QTRY_VERIFY(exchange.ended);
        }
        QCOMPARE(peer.requests().size(), 2);
        QVERIFY(!peer.requests().constLast().head.toLower().contains("cookie"));
    }

    void bodySizeIsBounded_data() {
        QTest::addColumn<qsizetype>("size");
        QTest::addColumn<bool>("good");
        constexpr qsizetype largest = qsizetype{16} * 1024 * 1024;
        QTest::newRow("largest") << largest << true;
        QTest::newRow("one more") << largest + 1 << false;
        QTest::newRow("twice") << 2 * largest << false;
    }

    void bodySizeIsBounded() {
        QFETCH(const qsizetype, size);
        QFETCH(const bool, good);
        HttpPeer peer;
        peer.answerWithJson("{}" + QByteArray(size - 2, ' '));
        QCOMPARE(fetch(request(peer.serverPort(), "/v1/health")).has_value(), good);
    }

    void badPortIsAFailure_data() {
        QTest::addColumn<qint64>("port");
        for (const qint64 port :
             {qint64(0), qint64(-1), qint64(65536), qint64(70000),
              std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()}) {
            QTest::addRow("%lld", static_cast<long long>(port)) << port;
        }
    }

    void badPortIsAFailure() {
        QFETCH(const qint64, port);
        QVERIFY(!fetch(request(port, "/v1/health")));
    }

    void refusedConnectionIsAFailure() {
        const KeptPort port;
        QVERIFY(!fetch(request(port.number(), "/v1/health")));
    }

    void tokenWithALineBreakIsNotSent() {
        HttpPeer peer;
        peer.answerWithJson("{}");
        qputenv("TESSALURE_WORKER_TOKEN", "a\r\nX-Injected: 1");
        QVERIFY(!fetch(request(peer.serverPort(), "/v1/health")));
        QCOMPARE(peer.connections(), 0);
    }

    void answerThatMemoryDoesNotHoldIsNone() {
        HttpPeer peer;
        peer.answerWithJson("{}");
        HttpSession session;
        int calls = 0;
        session.send(
            request(peer.serverPort(), "/"), this,
            +[](const QByteArray&) -> std::optional<int> { throw std::bad_alloc(); },
            [&](const std::optional<int>& answer) {
                QVERIFY(!answer);
                ++calls;
            });
        QTRY_COMPARE(calls, 1);
        Attempt later;
        later.send(session, request(peer.serverPort(), "/"), this);
        QTRY_VERIFY(later.answer);
        QCOMPARE(calls, 1);
    }

    void exchangesOverlap() {
        HttpPeer slow;
        HttpPeer fast;
        fast.answerWithJson("{}");
        HttpSession session;
        Attempt first;
        Attempt second;
        first.send(session, quick(request(slow.serverPort(), "/"), 1500ms), this);
        second.send(session, request(fast.serverPort(), "/"), this);
        QTRY_VERIFY(second.ended);
        QVERIFY(!first.ended);
        QTRY_VERIFY(first.ended);
        QCOMPARE(first.calls, 1);
    }

    void deadReceiverIsNotCalled() {
        HttpPeer peer;
        peer.answerWithJson("{}");
        HttpSession session;
        Attempt gone;
        auto receiver = std::make_unique<QObject>();
        gone.send(session, request(peer.serverPort(), "/"), receiver.get());
        receiver.reset();
        Attempt later;
        later.send(session, quick(request(peer.serverPort(), "/")), this);
        QTRY_VERIFY(later.ended);
        QTRY_COMPARE(peer.requests().size(), 2);
        QVERIFY(!gone.ended);
    }

    void endOfTheSessionGivesUpAtOnce() {
        HttpPeer peer;
        Attempt exchange;
        QElapsedTimer clock;
        {
            HttpSession session;
            exchange.send(session, request(peer.serverPort(), "/"), this);
            QTRY_COMPARE(peer.requests().size(), 1);
            clock.start();
        }
        QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(!exchange.ended);
    }
};

VESK_TEST(HttpSessionTest)
#include "HttpSessionTest.moc"

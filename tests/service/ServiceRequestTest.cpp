#include "service/ServiceRequest.h"
#include "tests/TestProgram.h"

#include <QTest>

using namespace vesk;
using namespace Qt::StringLiterals;

namespace {

QList<ServiceRequest::Header> headers(QList<ServiceRequest::Header> list) {
    return list;
}

} // namespace

class ServiceRequestTest : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { qunsetenv("TESSALURE_WORKER_TOKEN"); }

    void address() {
        QCOMPARE(request(8765, "/v1/health").port, 8765);
        QCOMPARE(request(8765, "/v1/health").path, "/v1/health");
        QCOMPARE(request(-1, "/v1/diagnostics").port, -1);
    }

    void defaults() {
        const ServiceRequest get = request(1, "/");
        QCOMPARE(get.method, "GET");
        QCOMPARE(get.timeout, std::chrono::milliseconds(4000));
        QVERIFY(get.body.isEmpty());
    }

    void tokenIsReadAtEachCall() {
        qunsetenv("TESSALURE_WORKER_TOKEN");
        QVERIFY(request(1, "/").headers.isEmpty());
        qputenv("TESSALURE_WORKER_TOKEN", "");
        QVERIFY(request(1, "/").headers.isEmpty());
        qputenv("TESSALURE_WORKER_TOKEN", "a b=");
        QCOMPARE(request(1, "/").headers, headers({{"Authorization", "Bearer a b="}}));
        qputenv("TESSALURE_WORKER_TOKEN", "other");
        QCOMPARE(request(1, "/").headers, headers({{"Authorization", "Bearer other"}}));
    }

    void post() {
        qputenv("TESSALURE_WORKER_TOKEN", "t");
        const ServiceRequest post =
            postRequest(1, "/v1/local/performance", {{u"mode"_s, u"quiet"_s}});
        QCOMPARE(post.method, "POST");
        QCOMPARE(
            post.headers,
            headers({{"Authorization", "Bearer t"}, {"Content-Type", "application/json"}}));
        QCOMPARE(post.body, R"({"mode":"quiet"})");
    }
};

VESK_TEST(ServiceRequestTest)
#include "ServiceRequestTest.moc"

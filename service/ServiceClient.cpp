#include "service/ServiceClient.h"

#include "service/Exchange.h"
#include "service/HealthReader.h"

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

ServiceClient::ServiceClient(Exchange& exchange, qint64 port) : exchange_(exchange), port_(port) {}

void ServiceClient::fetchHealth(QObject* receiver, HealthHandler handler) {
    send(request(port_, "/v1/health"), receiver, std::move(handler));
}

void ServiceClient::fetchBackendReady(QObject* receiver, std::function<void(bool)> handler) {
    exchange_.send(
        request(port_, "/v1/diagnostics"), receiver, readBackendReady,
        [handler = std::move(handler)](const auto& ready) { handler(ready.value_or(false)); });
}

void ServiceClient::postDeepScan(bool enabled, QObject* receiver, HealthHandler handler) {
    send(
        postRequest(port_, "/v1/local/services", {{u"deep_scan_enabled"_s, enabled}}), receiver,
        std::move(handler));
}

void ServiceClient::postPerformanceMode(
    const QString& mode, QObject* receiver, HealthHandler handler) {
    send(
        postRequest(port_, "/v1/local/performance", {{u"mode"_s, mode}}), receiver,
        std::move(handler));
}

void ServiceClient::send(const ServiceRequest& request, QObject* receiver, HealthHandler handler) {
    exchange_.send(request, receiver, readHealth, std::move(handler));
}

} // namespace vesk

#pragma once

#include "model/HealthDocument.h"

#include <QString>

#include <functional>
#include <optional>

class QObject;

namespace vesk {

class Exchange;
struct ServiceRequest;

/// The four exchanges with the local service. Main thread only; a handler runs once, later, unless
/// its receiver is gone by then.
class ServiceClient {
public:
    /// Absent for every kind of failure, an answer without `deep_scan_enabled` included.
    using HealthHandler = std::function<void(const std::optional<ConfirmedHealth>&)>;

    /// `exchange` outlives this. `port` is not checked; one outside 1..65535 makes every exchange
    /// fail.
    ServiceClient(Exchange& exchange, qint64 port);

    void fetchHealth(QObject* receiver, HealthHandler handler);

    /// Asks whether the photo engine behind the service is usable; false on failure.
    void fetchBackendReady(QObject* receiver, std::function<void(bool)> handler);

    void postDeepScan(bool enabled, QObject* receiver, HealthHandler handler);

    /// `mode` is one of "automatic", "quiet", "faster".
    void postPerformanceMode(const QString& mode, QObject* receiver, HealthHandler handler);

private:
    void send(const ServiceRequest& request, QObject* receiver, HealthHandler handler);

    Exchange& exchange_;
    qint64 port_;
};

} // namespace vesk

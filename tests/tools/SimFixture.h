#pragma once

#include "tests/tools/KeptPort.h"
#include "tests/tools/RawHttp.h"
#include "tools/worker-sim/Service.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <string>

namespace vesk {

/// A simulated service inside the test, on a port that is its own even while it does not listen.
class SimFixture {
public:
    explicit SimFixture(std::string token = {}, const sim::Scenario& scenario = {})
        : service_({sim::Rack({}, 1), 1.0, std::move(token)}) {
        service_.play(scenario);
        port_ = service_.start(kept_.number()).value_or(0);
    }

    [[nodiscard]] int port() const { return port_; }
    void stop() { service_.stop(); }

    [[nodiscard]] RawAnswer get(const QByteArray& path) const {
        return exchange(port_, rawRequest("GET", path));
    }

    [[nodiscard]] RawAnswer post(const QByteArray& path, const QByteArray& body) const {
        return exchange(port_, rawRequest("POST", path, body, {"Content-Type: application/json"}));
    }

    /// Whether the fault was accepted.
    [[nodiscard]] bool arm(const QByteArray& fault) const {
        return post("/sim/fault", fault).status() == 200;
    }

    /// The service's own document.
    [[nodiscard]] QJsonObject health() const { return document(get("/v1/health")); }

    [[nodiscard]] QJsonArray log() const {
        return QJsonDocument::fromJson(get("/sim/requests").body()).array();
    }

    [[nodiscard]] static QJsonObject document(const RawAnswer& answer) {
        return QJsonDocument::fromJson(answer.body()).object();
    }

private:
    KeptPort kept_;
    sim::Service service_;
    int port_ = 0;
};

} // namespace vesk

#pragma once

#include "tests/tools/KeptPort.h"
#include "tests/tools/RawHttp.h"
#include "tools/worker-sim/Service.h"
#include "tools/worker-sim/Simulation.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <string>

namespace vesk {

/// A simulated service inside the test, on a port that is its own even while it does not listen.
class SimFixture {
public:
    explicit SimFixture(std::string token = {}, double speed = 1)
        : simulation_(1, {}, speed),
          service_(simulation_, std::move(token)),
          port_(service_.start(kept_.number()).value_or(0)) {}

    [[nodiscard]] int port() const { return port_; }
    [[nodiscard]] sim::Simulation& simulation() { return simulation_; }
    [[nodiscard]] sim::Service& service() { return service_; }

    [[nodiscard]] RawAnswer
    get(const QByteArray& path, const QList<QByteArray>& headers = {}) const {
        return exchange(port_, rawRequest("GET", path, {}, headers));
    }

    [[nodiscard]] RawAnswer post(const QByteArray& path, const QByteArray& body) const {
        return exchange(port_, rawRequest("POST", path, body, {"Content-Type: application/json"}));
    }

    /// Whether the fault was accepted.
    [[nodiscard]] bool arm(const QByteArray& fault) const {
        return post("/sim/fault", fault).status() == 200;
    }

    [[nodiscard]] QJsonArray log() const {
        return QJsonDocument::fromJson(get("/sim/requests").body()).array();
    }

    [[nodiscard]] static QJsonObject document(const RawAnswer& answer) {
        return QJsonDocument::fromJson(answer.body()).object();
    }

private:
    KeptPort kept_;
    sim::Simulation simulation_;
    sim::Service service_;
    int port_;
};

} // namespace vesk

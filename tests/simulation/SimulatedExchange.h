#pragma once

#include "service/Exchange.h"

#include <QPointer>

#include <map>

namespace vesk {

/// Exchanges whose other end is the test: each stays open until it is ended.
class SimulatedExchange final : public Exchange {
public:
    /// Called with each request and its number, counted from 0, at once.
    std::function<void(std::size_t number, const ServiceRequest& request)> requested;

    /// All requests so far, or since the last forget().
    [[nodiscard]] const QList<ServiceRequest>& requests() const { return requests_; }

    /// Requests of this start, as "GET /v1/health".
    [[nodiscard]] qsizetype requestsOf(const QByteArray& start) const {
        return std::count_if(requests_.begin(), requests_.end(), [&](const ServiceRequest& each) {
            return (each.method + ' ' + each.path).startsWith(start);
        });
    }

    /// The numbers of those that have not ended.
    [[nodiscard]] QList<std::size_t> underWay() const {
        QList<std::size_t> numbers;
        for (const auto& [number, open] : open_) {
            numbers.append(number);
        }
        return numbers;
    }

    /// The body of a good answer, or nothing for a failure of whatever kind.
    void end(std::size_t number, const std::optional<QByteArray>& body) {
        const auto open = open_.extract(number);
        open.mapped().read(body);
        if (open.mapped().receiver) {
            open.mapped().done();
        }
    }

    /// Keeps no more of the past than has not ended.
    void forget() { requests_.clear(); }

private:
    struct Open {
        QPointer<QObject> receiver;
        Read read;
        std::function<void()> done;
    };

    void carry(
        const ServiceRequest& request, QObject* receiver, Read read,
        std::function<void()> done) override {
        const std::size_t number = carried_++;
        open_.emplace(number, Open{receiver, std::move(read), std::move(done)});
        requests_.append(request);
        if (requested) {
            requested(number, request);
        }
    }

    QList<ServiceRequest> requests_;
    std::size_t carried_ = 0;
    std::map<std::size_t, Open> open_;
};

} // namespace vesk

#pragma once

#include "service/ServiceRequest.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

class QObject;

namespace vesk {

/// What carries requests to the service and brings back what the answers say. Main thread only.
class Exchange {
public:
    /// What is made of the body of an answer with status exactly 200; nothing where it is none to
    /// go by. It runs on whatever thread the answer came in.
    template<typename Value>
    using Reader = std::optional<Value> (*)(const QByteArray& body);

    /// Gets what the reader made; nothing for every kind of failure, which are all the same to the
    /// caller.
    template<typename Value>
    using Handler = std::function<void(const std::optional<Value>&)>;

    Exchange() = default;
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;
    virtual ~Exchange() = default;

    /// Returns at once. Later calls `read`, and then `handler` once on the main thread, unless
    /// `receiver` or this is gone by then.
    template<typename Value>
    void send(
        const ServiceRequest& request, QObject* receiver, Reader<Value> read,
        std::type_identity_t<Handler<Value>> handler) {
        const auto answer = std::make_shared<std::optional<Value>>();
        carry(
            request, receiver,
            [answer, read](const std::optional<QByteArray>& body) {
                if (body) {
                    *answer = read(*body);
                }
                return answer->has_value();
            },
            [answer, handler = std::move(handler)] { handler(*answer); });
    }

protected:
    /// Gets the body of a good answer, nothing for a failure. Returns whether it is one to go by.
    using Read = std::function<bool(const std::optional<QByteArray>& body)>;

    /// Calls `read` when the exchange has ended, on any thread, and `done` after it on the main
    /// thread; as `send` says.
    virtual void carry(
        const ServiceRequest& request, QObject* receiver, Read read,
        std::function<void()> done) = 0;
};

} // namespace vesk

#pragma once

#include "service/ServiceRequest.h"

#include <QObject>
#include <QPointer>

#include <any>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <type_traits>

namespace vesk {

class HttpWorker;

/// Sends requests to the service and brings back what each answer says. No proxy, no redirect, no
/// cookie, no cache, no repetition: one request on one connection of its own. Main thread only; the
/// exchanges themselves run on a thread of the session's own, and so does the reading of answers.
class HttpSession final : public QObject {
    Q_OBJECT

public:
    /// A longer body makes the exchange a failure.
    static constexpr qsizetype maxAnswerBytes = 16 * 1024 * 1024;

    /// What is made of the body of an answer; nothing where it is none to go by.
    template<typename Value>
    using Reader = std::optional<Value> (*)(const QByteArray& body);

    /// Gets what the reader made; nothing for every kind of failure, which are all the same to the
    /// caller. An answer is read when its status is exactly 200.
    template<typename Value>
    using Handler = std::function<void(const std::optional<Value>&)>;

    explicit HttpSession(QObject* parent = nullptr);
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    /// Gives up all exchanges under way; their handlers never run.
    ~HttpSession() override;

    /// Calls `read` on the session's thread, and then `handler` once on the main thread, unless
    /// `receiver` is gone by then.
    template<typename Value>
    void send(
        const ServiceRequest& request, QObject* receiver, Reader<Value> read,
        std::type_identity_t<Handler<Value>> handler) {
        carry(
            request, receiver,
            [read](const std::optional<QByteArray>& body) -> std::any {
                return body ? read(*body) : std::optional<Value>();
            },
            [handler = std::move(handler)](const std::any& answer) {
                handler(std::any_cast<const std::optional<Value>&>(answer));
            });
    }

signals:
    void resultsWaiting(QPrivateSignal);

private:
    struct Pending {
        QPointer<QObject> receiver;
        std::function<void(const std::any&)> handler;
    };

    void carry(
        const ServiceRequest& request, QObject* receiver,
        std::function<std::any(const std::optional<QByteArray>&)> read,
        std::function<void(const std::any&)> handler);
    void deliver();

    quint64 lastId_ = 0;
    std::map<quint64, Pending> pending_;
    std::unique_ptr<HttpWorker> worker_;
};

} // namespace vesk

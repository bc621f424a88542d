#pragma once

#include "service/ServiceRequest.h"

#include <QJsonObject>
#include <QObject>
#include <QPointer>

#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace vesk {

class HttpWorker;

/// Sends requests to the service and brings back the JSON object of each answer. No proxy, no
/// redirect, no cookie, no cache, no repetition: one request on one connection of its own.
/// Main thread only; the exchanges themselves run on a thread of the session's own.
class HttpSession final : public QObject {
    Q_OBJECT

public:
    /// The JSON object of an answer with status exactly 200; absent for every kind of failure,
    /// which are all the same to the caller.
    using Answer = std::optional<QJsonObject>;
    using Handler = std::function<void(const Answer&)>;

    /// A longer body makes the exchange a failure.
    static constexpr qsizetype maxAnswerBytes = 16 * 1024 * 1024;

    explicit HttpSession(QObject* parent = nullptr);
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    /// Gives up all exchanges under way; their handlers never run.
    ~HttpSession() override;

    /// Calls `handler` once on the main thread when the exchange has ended, unless `receiver` is
    /// gone by then.
    void send(const ServiceRequest& request, QObject* receiver, Handler handler);

signals:
    void resultsWaiting(QPrivateSignal);

private:
    struct Pending {
        QPointer<QObject> receiver;
        Handler handler;
    };

    void deliver();

    quint64 lastId_ = 0;
    std::map<quint64, Pending> pending_;
    std::unique_ptr<HttpWorker> worker_;
};

} // namespace vesk

#pragma once

#include "service/Exchange.h"

#include <QObject>
#include <QPointer>

#include <map>

namespace vesk {

class HttpWorker;

/// Exchanges over HTTP. No proxy, no redirect, no cookie, no cache, no repetition: one request on
/// one connection of its own. The exchanges run on a thread of the session's own, and so does the
/// reading of answers.
class HttpSession final : public QObject, public Exchange {
    Q_OBJECT

public:
    /// A longer body makes the exchange a failure.
    static constexpr qsizetype maxAnswerBytes = qsizetype{16} * 1024 * 1024;

    HttpSession();
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    /// Gives up all exchanges under way; their handlers never run.
    ~HttpSession() override;

signals:
    void exchangesEnded(QPrivateSignal);

private:
    struct Pending {
        QPointer<QObject> receiver;
        std::function<void()> done;
    };

    void carry(
        const ServiceRequest& request, QObject* receiver, Read read,
        std::function<void()> done) override;
    void deliver();

    quint64 lastId_ = 0;
    std::map<quint64, Pending> pending_;
    std::unique_ptr<HttpWorker> worker_;
};

} // namespace vesk

#include "service/HttpSession.h"

#include "service/HttpWorker.h"

#include <utility>

namespace vesk {

HttpSession::HttpSession() {
    connect(this, &HttpSession::exchangesEnded, this, &HttpSession::deliver, Qt::QueuedConnection);
    worker_ = std::make_unique<HttpWorker>([this] { emit exchangesEnded(QPrivateSignal()); });
}

HttpSession::~HttpSession() = default;

void HttpSession::carry(
    const ServiceRequest& request, QObject* receiver, Read read, std::function<void()> done) {
    const quint64 id = ++lastId_;
    pending_.emplace(id, Pending{receiver, std::move(done)});
    worker_->send({.id = id, .request = request, .read = std::move(read)});
}

void HttpSession::deliver() {
    for (const quint64 id : worker_->takeEnded()) {
        const auto pending = pending_.extract(id);
        if (pending.mapped().receiver) {
            pending.mapped().done();
        }
    }
}

} // namespace vesk

#include "service/HttpSession.h"

#include "service/HttpWorker.h"

#include <utility>

namespace vesk {

HttpSession::HttpSession(QObject* parent) : QObject(parent) {
    // Plain HTTP needs none of the library's global parts; the calls are counted by the library.
    curl_global_init(CURL_GLOBAL_NOTHING);
    connect(this, &HttpSession::resultsWaiting, this, &HttpSession::deliver, Qt::QueuedConnection);
    worker_ = std::make_unique<HttpWorker>([this] { emit resultsWaiting(QPrivateSignal()); });
}

HttpSession::~HttpSession() {
    worker_.reset();
    curl_global_cleanup();
}

void HttpSession::carry(
    const ServiceRequest& request, QObject* receiver, HttpWorker::Reader read,
    std::function<void(const std::any&)> handler) {
    const quint64 id = ++lastId_;
    pending_.emplace(id, Pending{receiver, std::move(handler)});
    worker_->send({id, request, std::move(read)});
}

void HttpSession::deliver() {
    for (const HttpWorker::Result& result : worker_->takeResults()) {
        const auto pending = pending_.extract(result.id);
        if (pending.mapped().receiver) {
            pending.mapped().handler(result.answer);
        }
    }
}

} // namespace vesk

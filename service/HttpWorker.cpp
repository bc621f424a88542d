#include "service/HttpWorker.h"

#include "service/HttpExchange.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <new>
#include <utility>

namespace vesk {

namespace asio = boost::asio;

/// One thread runs it.
class HttpWorker::Loop {
public:
    asio::io_context context{1};
    asio::executor_work_guard<asio::io_context::executor_type> stays{context.get_executor()};

    static asio::awaitable<void> carry(HttpWorker& worker, Order order) {
        const auto body = co_await httpBody(std::move(order.request));
        try {
            order.read(body);
        } catch (const std::bad_alloc&) {
            // An answer for which there is no memory is none.
            order.read(std::nullopt);
        }
        worker.putDown(order.id);
    }
};

HttpWorker::HttpWorker(std::function<void()> exchangesEnded)
    : exchangesEnded_(std::move(exchangesEnded)),
      loop_(std::make_unique<Loop>()),
      thread_([this] { loop_->context.run(); }) {}

HttpWorker::~HttpWorker() {
    loop_->context.stop();
    thread_.join();
}

void HttpWorker::send(Order order) {
    asio::co_spawn(loop_->context, Loop::carry(*this, std::move(order)), asio::detached);
}

std::vector<quint64> HttpWorker::takeEnded() {
    const std::lock_guard lock(mutex_);
    return std::exchange(ended_, {});
}

void HttpWorker::putDown(quint64 id) {
    {
        const std::lock_guard lock(mutex_);
        ended_.push_back(id);
    }
    exchangesEnded_();
}

} // namespace vesk

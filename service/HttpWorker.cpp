#include "service/HttpWorker.h"

#include "model/Timing.h"
#include "service/HttpExchange.h"
#include "service/JsonParser.h"
#include "service/ServiceLog.h"

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
        const TimePoint begun = TimePoint::clock::now();
        const HttpAnswer answer = co_await httpAnswer(order.request);
        const ExchangeEnd end = read(order, answer);
        qCDebug(serviceLog).noquote()
            << exchangeLine(order.request, inDetail(end, answer), timeSince(begun));
        worker.putDown(order.id);
    }

private:
    /// Has the answer read, and returns how the exchange ended with that.
    static ExchangeEnd read(const Order& order, const HttpAnswer& answer) {
        ExchangeEnd end = answer.end;
        try {
            if (!order.read(answer.body) && answer.body) {
                end.kind = ExchangeEnd::Kind::WrongDocument;
            }
        } catch (const std::bad_alloc&) {
            // An answer for which there is no memory is none.
            order.read(std::nullopt);
            end.kind = ExchangeEnd::Kind::NoMemory;
        }
        return end;
    }

    /// Tells apart what was not worth another look while nobody asked.
    static ExchangeEnd inDetail(ExchangeEnd end, const HttpAnswer& answer) {
        if (end.kind == ExchangeEnd::Kind::WrongDocument && !isJson(*answer.body)) {
            end.kind = ExchangeEnd::Kind::NotJson;
        }
        return end;
    }

    static std::chrono::milliseconds timeSince(TimePoint begun) {
        return std::chrono::floor<std::chrono::milliseconds>(TimePoint::clock::now() - begun);
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

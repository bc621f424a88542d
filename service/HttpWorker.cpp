#include "service/HttpWorker.h"

#include <limits>
#include <new>
#include <utility>

namespace vesk {

HttpWorker::HttpWorker(std::function<void()> resultsWaiting)
    : resultsWaiting_(std::move(resultsWaiting)), multi_(curl_multi_init()) {
    if (!multi_) {
        throw std::bad_alloc();
    }
    thread_ = std::thread(&HttpWorker::run, this);
}

HttpWorker::~HttpWorker() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    curl_multi_wakeup(multi_.get());
    thread_.join();
}

void HttpWorker::send(Order order) {
    {
        const std::lock_guard lock(mutex_);
        orders_.push_back(std::move(order));
    }
    curl_multi_wakeup(multi_.get());
}

std::vector<HttpWorker::Result> HttpWorker::takeResults() {
    const std::lock_guard lock(mutex_);
    return std::exchange(results_, {});
}

void HttpWorker::run() {
    for (;;) {
        std::vector<Order> orders;
        {
            const std::lock_guard lock(mutex_);
            if (stopping_) {
                break;
            }
            orders.swap(orders_);
        }
        for (Order& order : orders) {
            begin(std::move(order));
        }
        int running = 0;
        curl_multi_perform(multi_.get(), &running);
        finishDone();
        curl_multi_poll(multi_.get(), nullptr, 0, std::numeric_limits<int>::max(), nullptr);
    }
    for (const auto& [handle, exchange] : exchanges_) {
        curl_multi_remove_handle(multi_.get(), handle);
    }
    exchanges_.clear();
}

void HttpWorker::begin(Order order) {
    auto transfer = std::make_unique<HttpTransfer>(std::move(order.request));
    CURL* handle = transfer->handle();
    if (handle == nullptr || curl_multi_add_handle(multi_.get(), handle) != CURLM_OK) {
        putDown({order.id, order.read({})});
        return;
    }
    exchanges_.emplace(handle, Exchange{order.id, std::move(order.read), std::move(transfer)});
}

void HttpWorker::finishDone() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg != CURLMSG_DONE) {
            continue;
        }
        CURL* handle = message->easy_handle;
        const CURLcode result = message->data.result;
        curl_multi_remove_handle(multi_.get(), handle);
        const Exchange exchange = std::move(exchanges_.extract(handle).mapped());
        putDown({exchange.id, exchange.read(exchange.transfer->body(result))});
    }
}

void HttpWorker::putDown(Result result) {
    {
        const std::lock_guard lock(mutex_);
        results_.push_back(std::move(result));
    }
    resultsWaiting_();
}

} // namespace vesk

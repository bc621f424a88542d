#pragma once

#include "service/HttpTransfer.h"

#include <QJsonObject>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace vesk {

/// The thread that carries all exchanges and decodes their answers. It sleeps while there is
/// nothing to carry.
class HttpWorker {
public:
    struct Result {
        quint64 id = 0;
        std::optional<QJsonObject> document; ///< absent for every kind of failure
    };

    /// `resultsWaiting` is called on the worker's thread after results were put down.
    explicit HttpWorker(std::function<void()> resultsWaiting);
    HttpWorker(const HttpWorker&) = delete;
    HttpWorker& operator=(const HttpWorker&) = delete;

    /// Gives up what is under way and waits for the thread, which takes no time to mention.
    ~HttpWorker();

    void send(quint64 id, const ServiceRequest& request);

    /// The results since the last call, in the order in which they came.
    [[nodiscard]] std::vector<Result> takeResults();

private:
    struct Order {
        quint64 id = 0;
        ServiceRequest request;
    };
    struct MultiCloser {
        void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
    };

    void run();
    void begin(const Order& order);
    void finishDone();
    void putDown(Result result);

    std::function<void()> resultsWaiting_;
    std::unique_ptr<CURLM, MultiCloser> multi_;

    std::mutex mutex_; // guards the three below
    std::vector<Order> orders_;
    std::vector<Result> results_;
    bool stopping_ = false;

    std::map<CURL*, std::unique_ptr<HttpTransfer>> transfers_; // the worker's thread only
    std::thread thread_;
};

} // namespace vesk

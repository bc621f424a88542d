#pragma once

#include "service/HttpTransfer.h"

#include <any>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace vesk {

/// The thread that carries all exchanges and has their answers read. It sleeps while there is
/// nothing to carry.
class HttpWorker {
public:
    /// Called on the worker's thread with the body of a good answer, or with nothing for every kind
    /// of failure.
    using Reader = std::function<std::any(const std::optional<QByteArray>&)>;

    struct Order {
        quint64 id = 0; ///< names the exchange for whoever asked for it
        ServiceRequest request;
        Reader read;
    };

    struct Result {
        quint64 id = 0;
        std::any answer; ///< what the reader made
    };

    /// `resultsWaiting` is called on the worker's thread after results were put down.
    explicit HttpWorker(std::function<void()> resultsWaiting);
    HttpWorker(const HttpWorker&) = delete;
    HttpWorker& operator=(const HttpWorker&) = delete;

    /// Gives up what is under way and waits for the thread, which takes no time to mention.
    ~HttpWorker();

    void send(Order order);

    /// The results since the last call, in the order in which they came.
    [[nodiscard]] std::vector<Result> takeResults();

private:
    struct Exchange {
        quint64 id = 0;
        Reader read;
        std::unique_ptr<HttpTransfer> transfer;
    };
    struct MultiCloser {
        void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
    };

    void run();
    void begin(Order order);
    void finishDone();
    void putDown(Result result);

    std::function<void()> resultsWaiting_;
    std::unique_ptr<CURLM, MultiCloser> multi_;

    std::mutex mutex_; // guards the three below
    std::vector<Order> orders_;
    std::vector<Result> results_;
    bool stopping_ = false;

    std::map<CURL*, Exchange> exchanges_; // the worker's thread only
    std::thread thread_;
};

} // namespace vesk

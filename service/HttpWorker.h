#pragma once

#include "service/ServiceRequest.h"

#include <functional>
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
    struct Order {
        quint64 id = 0; ///< names the exchange for whoever asked for it
        ServiceRequest request;
        /// Gets the body of a good answer, nothing for a failure; on the worker's thread. Returns
        /// whether it is one to go by.
        std::function<bool(const std::optional<QByteArray>&)> read;
    };

    /// `exchangesEnded` is called on the worker's thread after exchanges have ended.
    explicit HttpWorker(std::function<void()> exchangesEnded);
    HttpWorker(const HttpWorker&) = delete;
    HttpWorker& operator=(const HttpWorker&) = delete;

    /// Gives up what is under way and waits for the thread, which takes no time to mention.
    ~HttpWorker();

    void send(Order order);

    /// The exchanges that have ended and were read since the last call, in that order.
    [[nodiscard]] std::vector<quint64> takeEnded();

private:
    class Loop;

    void putDown(quint64 id);

    std::function<void()> exchangesEnded_;
    std::mutex mutex_; // guards the one below
    std::vector<quint64> ended_;
    std::unique_ptr<Loop> loop_;
    std::thread thread_;
};

} // namespace vesk

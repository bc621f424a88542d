#pragma once

#include "service/ServiceRequest.h"

#include <curl/curl.h>

#include <QByteArray>

#include <memory>
#include <optional>

namespace vesk {

/// One exchange on its own connection: a request on its way and the answer so far. Not copied and
/// not moved, since the transfer library keeps its address.
class HttpTransfer {
public:
    explicit HttpTransfer(ServiceRequest request);
    HttpTransfer(const HttpTransfer&) = delete;
    HttpTransfer& operator=(const HttpTransfer&) = delete;
    ~HttpTransfer();

    /// The transfer library's handle; null for a request that must not be sent.
    [[nodiscard]] CURL* handle() const noexcept { return handle_.get(); }

    /// The whole body, when the exchange ended with `result` and the status is exactly 200.
    [[nodiscard]] std::optional<QByteArray> body(CURLcode result) const;

private:
    static size_t receiveBody(char* data, size_t size, size_t count, void* transfer);
    static size_t receiveHeader(char* data, size_t size, size_t count, void* transfer);

    struct HandleCloser {
        void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
    };
    struct ListCloser {
        void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
    };

    ServiceRequest request_;
    QByteArray received_;
    size_t headerBytes_ = 0;
    std::unique_ptr<curl_slist, ListCloser> headers_;
    std::unique_ptr<CURL, HandleCloser> handle_;
};

} // namespace vesk

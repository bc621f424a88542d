#include "service/HttpTransfer.h"

#include "service/HttpSession.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vesk {

namespace {

/// Far above what an answer's headers take, far below what would matter.
constexpr size_t maxHeaderBytes = 64 * 1024;

/// A line break inside a header line would start a header of the token's choosing.
bool isOneLine(const QByteArray& header) {
    return std::none_of(
        header.begin(), header.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

} // namespace

HttpTransfer::HttpTransfer(ServiceRequest request) : request_(std::move(request)) {
    if (!std::all_of(request_.headers.begin(), request_.headers.end(), isOneLine)) {
        return;
    }
    curl_slist* list = nullptr;
    for (const QByteArray& header : std::as_const(request_.headers)) {
        list = curl_slist_append(list, header.constData());
    }
    // No handshake before a body: the service answers at once.
    headers_.reset(curl_slist_append(list, "Expect:"));
    handle_.reset(curl_easy_init());
    if (!headers_ || !handle_) {
        throw std::bad_alloc();
    }

    CURL* curl = handle_.get();
    curl_easy_setopt(curl, CURLOPT_PRIVATE, this);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_URL, request_.url.constData());
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http");
    curl_easy_setopt(curl, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 0L);
    // An empty name switches proxies off, those of the environment included.
    curl_easy_setopt(curl, CURLOPT_PROXY, "");
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(request_.timeout.count()));
    // A fresh connection for each exchange: one kept from the last poll may be closed by now, and
    // only on a kept one would the library send a request again by itself.
    curl_easy_setopt(curl, CURLOPT_FRESH_CONNECT, 1L);
    curl_easy_setopt(curl, CURLOPT_FORBID_REUSE, 1L);
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers_.get());
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &HttpTransfer::receiveBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, &HttpTransfer::receiveHeader);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, this);
    if (request_.method == "POST") {
        curl_easy_setopt(curl, CURLOPT_POST, 1L);
        curl_easy_setopt(
            curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, request_.body.constData());
    }
}

HttpTransfer::~HttpTransfer() = default;

std::optional<QByteArray> HttpTransfer::body(CURLcode result) const {
    long status = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
    return result == CURLE_OK && status == 200 ? std::optional(received_) : std::nullopt;
}

size_t HttpTransfer::receiveBody(char* data, size_t size, size_t count, void* transfer) {
    auto* self = static_cast<HttpTransfer*>(transfer);
    const size_t bytes = size * count;
    if (static_cast<size_t>(self->received_.size()) + bytes
        > static_cast<size_t>(HttpSession::maxAnswerBytes)) {
        return 0;
    }
    self->received_.append(data, static_cast<qsizetype>(bytes));
    return bytes;
}

size_t HttpTransfer::receiveHeader(char* /*data*/, size_t size, size_t count, void* transfer) {
    auto* self = static_cast<HttpTransfer*>(transfer);
    self->headerBytes_ += size * count;
    return self->headerBytes_ > maxHeaderBytes ? 0 : size * count;
}

} // namespace vesk

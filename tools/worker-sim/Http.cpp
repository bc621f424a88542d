#include "tools/worker-sim/Http.h"

#include "tools/worker-sim/Json.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>

namespace vesk::sim {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view endOfHead = "\r\n\r\n";
constexpr std::size_t largestRequest = std::size_t{1024} * 1024;

/// Cuts the text up to `end` off `text`; all of it where there is no `end`.
std::string_view takeUntil(std::string_view& text, std::string_view end) {
    const auto size = text.find(end);
    const auto taken = text.substr(0, size);
    text.remove_prefix(size == std::string_view::npos ? text.size() : size + end.size());
    return taken;
}

std::string_view trimmed(std::string_view text) {
    const auto first = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

std::optional<Request> requestWithHead(std::string_view head) {
    Request request;
    std::string_view line = takeUntil(head, lineEnd);
    request.method = takeUntil(line, " ");
    request.target = takeUntil(line, " ");
    if (request.method.empty() || !request.target.starts_with('/')
        || !line.starts_with("HTTP/1.")) {
        return std::nullopt;
    }
    while (!head.empty()) {
        std::string_view value = takeUntil(head, lineEnd);
        if (value.find(':') == std::string_view::npos) {
            return std::nullopt;
        }
        const auto name = takeUntil(value, ":");
        request.headers.emplace_back(name, trimmed(value));
    }
    return request;
}

/// The length of the body; nothing when it is not known.
std::optional<std::size_t> bodySize(const Request& request) {
    const std::string text = request.header("Content-Length");
    if (text.empty() && request.header("Transfer-Encoding").empty()) {
        return 0;
    }
    std::size_t size = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, size);
    return result.ec == std::errc() && result.ptr == end ? std::optional(size) : std::nullopt;
}

} // namespace

std::string Request::header(const char* name) const {
    const auto found = std::ranges::find_if(
        headers, [&](const auto& header) { return ::strcasecmp(header.first.c_str(), name) == 0; });
    return found == headers.end() ? std::string() : found->second;
}

std::variant<std::monostate, Request, Reply> requestIn(std::string_view bytes) {
    if (bytes.size() > largestRequest) {
        return Reply{413, errorText("a request has at most 1048576 bytes")};
    }
    const auto headSize = bytes.find(endOfHead);
    if (headSize == std::string_view::npos) {
        return {};
    }
    auto request = requestWithHead(bytes.substr(0, headSize));
    const auto size = request ? bodySize(*request) : std::nullopt;
    if (!size) {
        return Reply{400, errorText("this is no HTTP request with a Content-Length")};
    }
    const auto body = bytes.substr(headSize + endOfHead.size());
    if (body.size() < *size) {
        return {};
    }
    request->body = body.substr(0, *size);
    return *std::move(request);
}

std::string bytesOf(const Reply& reply) {
    std::string bytes = "HTTP/1.1 " + std::to_string(reply.status) + " \r\n";
    bytes += "Content-Type: application/json\r\n";
    bytes += "Content-Length: " + std::to_string(reply.body.size()) + "\r\n";
    if (!reply.location.empty()) {
        bytes += "Location: " + reply.location + "\r\n";
    }
    return bytes + "Connection: close\r\n\r\n" + reply.body;
}

} // namespace vesk::sim

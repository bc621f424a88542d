#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vesk::sim {

struct Request {
    std::string method;
    std::string target;                                       ///< as in the request line
    std::vector<std::pair<std::string, std::string>> headers; ///< in the order received
    std::string body;

    /// The target without its query.
    [[nodiscard]] std::string path() const { return target.substr(0, target.find('?')); }

    /// The value of the first header of that name, in any case; empty when there is none.
    [[nodiscard]] std::string header(const char* name) const;
};

/// An answer with a JSON document.
struct Reply {
    int status = 200;
    std::string body;
    std::string location = {}; ///< empty: there is no such header
};

/// The request that `bytes` hold, the reply to one that cannot be read, or neither as long as it is
/// incomplete.
[[nodiscard]] std::variant<std::monostate, Request, Reply> requestIn(std::string_view bytes);

/// The reply as it is sent, on a connection that is closed afterwards.
[[nodiscard]] std::string bytesOf(const Reply& reply);

} // namespace vesk::sim

#pragma once

#include "tools/worker-sim/Random.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <variant>

namespace vesk::sim {

/// What goes wrong with an answer. Several things may be set at once.
struct Fault {
    std::string path;         ///< last piece of the path that it is for; empty: any
    std::optional<int> skip;  ///< how many requests that fit pass it by before
    std::optional<int> count; ///< how many requests it is for; nothing: all of them

    // On the way from the client.
    std::optional<Seconds> unread; ///< no request is read for that long, then no more

    // On the way to the client.
    std::optional<Seconds> late;     ///< wait before anything is sent
    std::optional<Seconds> dripHead; ///< wait before each byte of the head
    std::optional<Seconds> drip;     ///< wait before each byte of the body
    std::optional<Seconds> stall;    ///< wait after half the body
    bool truncate = false;           ///< half the body, then the connection closes
    bool hangUp = false;             ///< no answer, the connection closes
    bool reset = false;              ///< no answer, the connection is reset
    std::optional<std::string> raw;  ///< sent in place of the whole answer

    // In the head of the answer.
    std::optional<std::size_t> headSize; ///< it is filled up to that many bytes
    std::optional<std::size_t> length;   ///< told as the length of the body
    std::optional<std::string> framing;  ///< "chunked" or "close", in place of a length

    // In the answer itself.
    std::optional<int> status;           ///< the request is not carried out
    std::optional<std::string> redirect; ///< status 302 to this place; not carried out either
    bool done = false;                   ///< it is carried out all the same
    std::optional<std::string> body;     ///< sent in place of the document
    std::optional<nlohmann::json> patch; ///< a merge patch over the document
    std::optional<std::size_t> size;     ///< the body is filled up with blanks to that many bytes
    bool opposite = false;               ///< the deep-job switch ends up the other way round

    [[nodiscard]] bool refusesRequest() const { return (status || redirect) && !done; }
};

/// The fault that `document` describes, or a sentence that says what is wrong with it.
[[nodiscard]] std::variant<Fault, std::string> faultFromJson(const nlohmann::json& document);

/// The same fault in the form that `faultFromJson` reads.
[[nodiscard]] nlohmann::json toJson(const Fault& fault);

} // namespace vesk::sim

#pragma once

#include "tools/worker-sim/Http.h"
#include "tools/worker-sim/Seconds.h"
#include "tools/worker-sim/Server.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vesk::sim {

/// What goes wrong with an answer. Several things may be set at once.
struct Fault {
    nlohmann::json description = nlohmann::json::object(); ///< as `faultFromJson` reads it

    std::string path;         ///< last piece of the path that it is for; empty: any
    std::optional<int> count; ///< how many requests it is for; nothing: all of them

    std::optional<int> status;                       ///< the request is not carried out
    std::string redirect;                            ///< status 302 to this place, likewise
    bool opposite = false;                           ///< deep jobs end up the other way round
    nlohmann::json patch = nlohmann::json::object(); ///< a merge patch over the document
    std::optional<std::string> body;                 ///< sent in place of the document
    std::size_t size = 0; ///< the body is filled up with blanks to that many bytes

    Seconds late{};                 ///< wait before anything is sent
    bool truncate = false;          ///< half the body, then the connection closes
    bool reset = false;             ///< no answer, the connection is reset
    std::optional<std::string> raw; ///< sent in place of the answer; may be empty

    [[nodiscard]] bool refusesRequest() const { return status || !redirect.empty(); }

    /// What is sent in place of `reply`.
    [[nodiscard]] Answer answerFor(Reply reply) const;
};

/// The fault that `description` describes, or a sentence that says what is wrong with it.
[[nodiscard]] std::variant<Fault, std::string> faultFromJson(const nlohmann::json& description);

/// The faults that wait for requests, in the order in which they were armed.
class Faults {
public:
    void arm(Fault fault) { armed_.push_back(std::move(fault)); }
    void clear() { armed_.clear(); }

    /// The first fault for a request to `path`, counted down by one; without one, a fault that does
    /// nothing.
    [[nodiscard]] Fault take(std::string_view path);

    /// The descriptions, with what is left of each count.
    [[nodiscard]] nlohmann::json descriptions() const;

private:
    std::vector<Fault> armed_;
};

} // namespace vesk::sim

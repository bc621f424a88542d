#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace vesk::sim {

/// The document as text; bytes that are no UTF-8 are replaced.
[[nodiscard]] inline std::string textOf(const nlohmann::json& document) {
    return document.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

/// The body of an answer that says what went wrong.
[[nodiscard]] inline std::string errorText(const std::string& message) {
    return textOf({{"error", message}});
}

} // namespace vesk::sim

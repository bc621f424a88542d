#include "tools/worker-sim/Fault.h"

#include "tools/worker-sim/Json.h"

#include <algorithm>
#include <array>

namespace vesk::sim {

namespace {

using nlohmann::json;

bool isText(const json& value) {
    return value.is_string();
}

bool isFlag(const json& value) {
    return value.is_boolean();
}

bool isObject(const json& value) {
    return value.is_object();
}

bool isPath(const json& value) {
    constexpr std::array paths{"health", "diagnostics", "services", "performance"};
    return std::ranges::find(paths, value) != paths.end();
}

template<int least, int most>
bool isWhole(const json& value) {
    return value.is_number_integer() && value >= least && value <= most;
}

bool isTime(const json& value) {
    return value.is_number() && value >= 0 && value <= 3600;
}

struct Key {
    std::string_view name;
    bool (*fits)(const json& value);
    std::string_view wanted;
};

constexpr std::array keys{
    Key{"path", isPath, "health, diagnostics, services or performance"},
    Key{"count", isWhole<1, 1'000'000>, "a whole number from 1 to 1000000"},
    Key{"status", isWhole<100, 999>, "a whole number from 100 to 999"},
    Key{"redirect", isText, "a text"},
    Key{"opposite", isFlag, "true or false"},
    Key{"patch", isObject, "an object"},
    Key{"body", isText, "a text"},
    Key{"size", isWhole<0, 268'435'456>, "a whole number from 0 to 268435456"},
    Key{"late", isTime, "a number of seconds from 0 to 3600"},
    Key{"truncate", isFlag, "true or false"},
    Key{"hang_up", isFlag, "true or false"},
    Key{"reset", isFlag, "true or false"},
    Key{"raw", isText, "a text"}};

/// What is wrong with the description of a fault; empty when nothing is.
std::string complaintAbout(const json& description) {
    if (!description.is_object()) {
        return "a fault is a JSON object";
    }
    for (const auto& [name, value] : description.items()) {
        const auto* const key = std::ranges::find(keys, name, &Key::name);
        if (key == keys.end()) {
            return "there is a key that no fault has";
        }
        if (!key->fits(value)) {
            return name + " must be " + std::string(key->wanted);
        }
    }
    return {};
}

template<typename Value>
std::optional<Value> valueIn(const json& description, const char* key) {
    const auto found = description.find(key);
    return found == description.end() ? std::nullopt : std::optional(found->get<Value>());
}

bool fits(const Fault& fault, std::string_view path) {
    return fault.path.empty() || path.ends_with("/" + fault.path);
}

} // namespace

std::variant<Fault, std::string> faultFromJson(const json& description) {
    if (std::string complaint = complaintAbout(description); !complaint.empty()) {
        return complaint;
    }
    return Fault{
        .description = description,
        .path = description.value("path", ""),
        .count = valueIn<int>(description, "count"),
        .status = valueIn<int>(description, "status"),
        .redirect = description.value("redirect", ""),
        .opposite = description.value("opposite", false),
        .patch = description.value("patch", json::object()),
        .body = valueIn<std::string>(description, "body"),
        .size = description.value("size", std::size_t{0}),
        .late = Seconds(description.value("late", 0.0)),
        .truncate = description.value("truncate", false),
        .reset = description.value("reset", false),
        .raw = description.value("hang_up", false) ? "" : valueIn<std::string>(description, "raw")};
}

Answer Fault::answerFor(Reply reply) const {
    if (raw || reset) {
        return {.bytes = raw.value_or(""), .delay = late, .reset = reset};
    }
    if (!patch.empty() && reply.status == 200) {
        json document = json::parse(reply.body);
        document.merge_patch(patch);
        reply.body = textOf(document);
    }
    reply.body = body.value_or(reply.body);
    reply.body.resize(std::max(size, reply.body.size()), ' ');
    reply.location = redirect;
    reply.status = status.value_or(redirect.empty() ? reply.status : 302);
    std::string bytes = bytesOf(reply);
    if (truncate) {
        bytes.resize(bytes.size() - (reply.body.size() + 1) / 2);
    }
    return {.bytes = std::move(bytes), .delay = late};
}

Fault Faults::take(std::string_view path) {
    const auto met =
        std::ranges::find_if(armed_, [&](const Fault& fault) { return fits(fault, path); });
    if (met == armed_.end()) {
        return {};
    }
    Fault fault = *met;
    if (met->count && --*met->count == 0) {
        armed_.erase(met);
    } else if (met->count) {
        met->description["count"] = *met->count;
    }
    return fault;
}

json Faults::descriptions() const {
    auto list = json::array();
    for (const Fault& fault : armed_) {
        list.push_back(fault.description);
    }
    return list;
}

} // namespace vesk::sim

#include "tools/worker-sim/Fault.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace vesk::sim {

namespace {

using nlohmann::json;

constexpr double longestWait = 3600;
constexpr std::int64_t mostRequests = 1'000'000;
constexpr std::int64_t mostBytes = 256LL * 1024 * 1024;
constexpr std::array paths{"health", "diagnostics", "services", "performance"};
constexpr std::array framings{"chunked", "close"};

/// Reads the keys of one document and remembers the first that is wrong.
class Reader {
public:
    explicit Reader(const json& document) : document_(document) {}

    void flag(const char* key, bool& into) {
        if (const json* value = find(key)) {
            if (value->is_boolean()) {
                into = value->get<bool>();
            } else {
                complain(key, "true or false");
            }
        }
    }

    void text(const char* key, std::optional<std::string>& into) {
        if (const json* value = find(key)) {
            if (value->is_string()) {
                into = value->get<std::string>();
            } else {
                complain(key, "a text");
            }
        }
    }

    void seconds(const char* key, std::optional<Seconds>& into) {
        if (const json* value = find(key)) {
            if (value->is_number() && *value >= 0 && *value <= longestWait) {
                into = Seconds(value->get<double>());
            } else {
                complain(key, "a number of seconds from 0 to 3600");
            }
        }
    }

    template<typename Number>
    void
    whole(const char* key, std::int64_t least, std::int64_t most, std::optional<Number>& into) {
        if (const json* value = find(key)) {
            if (value->is_number_integer() && *value >= least && *value <= most) {
                into = value->get<Number>();
            } else {
                complain(
                    key,
                    "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
            }
        }
    }

    void object(const char* key, std::optional<json>& into) {
        if (const json* value = find(key)) {
            if (value->is_object()) {
                into = *value;
            } else {
                complain(key, "an object");
            }
        }
    }

    template<std::size_t Count>
    void word(
        const char* key, const std::array<const char*, Count>& words, const char* list,
        std::optional<std::string>& into) {
        text(key, into);
        if (into && std::ranges::find(words, *into) == words.end()) {
            complain(key, list);
        }
    }

    /// The first complaint; empty when every key was read and right.
    [[nodiscard]] std::string verdict() const {
        if (!complaint_.empty() || known_ == document_.size()) {
            return complaint_;
        }
        return "there is a key that no fault has";
    }

private:
    const json* find(const char* key) {
        const auto found = document_.find(key);
        if (found == document_.end()) {
            return nullptr;
        }
        ++known_;
        return &*found;
    }

    void complain(const char* key, const std::string& wanted) {
        if (complaint_.empty()) {
            complaint_ = std::string(key) + " must be " + wanted;
        }
    }

    const json& document_;
    std::size_t known_ = 0;
    std::string complaint_;
};

} // namespace

std::variant<Fault, std::string> faultFromJson(const json& document) {
    if (!document.is_object()) {
        return "a fault is a JSON object";
    }
    Fault fault;
    Reader reader(document);
    std::optional<std::string> path;
    reader.word("path", paths, "health, diagnostics, services or performance", path);
    fault.path = path.value_or("");
    reader.whole("skip", 1, mostRequests, fault.skip);
    reader.whole("count", 1, mostRequests, fault.count);
    reader.seconds("unread", fault.unread);
    reader.seconds("late", fault.late);
    reader.seconds("drip_head", fault.dripHead);
    reader.seconds("drip", fault.drip);
    reader.seconds("stall", fault.stall);
    reader.flag("truncate", fault.truncate);
    reader.flag("hang_up", fault.hangUp);
    reader.flag("reset", fault.reset);
    reader.text("raw", fault.raw);
    reader.whole("head_size", 0, mostBytes, fault.headSize);
    reader.whole("length", 0, mostBytes, fault.length);
    reader.word("framing", framings, "chunked or close", fault.framing);
    reader.whole("status", 100, 999, fault.status);
    reader.text("redirect", fault.redirect);
    reader.flag("done", fault.done);
    reader.text("body", fault.body);
    reader.object("patch", fault.patch);
    reader.whole("size", 0, mostBytes, fault.size);
    reader.flag("opposite", fault.opposite);
    if (const std::string complaint = reader.verdict(); !complaint.empty()) {
        return complaint;
    }
    return fault;
}

json toJson(const Fault& fault) {
    auto document = json::object();
    const auto put = [&](const char* key, const auto& value) {
        if (value) {
            document[key] = *value;
        }
    };
    const auto putSeconds = [&](const char* key, const std::optional<Seconds>& value) {
        if (value) {
            document[key] = value->count();
        }
    };
    const auto putFlag = [&](const char* key, bool value) {
        if (value) {
            document[key] = true;
        }
    };
    if (!fault.path.empty()) {
        document["path"] = fault.path;
    }
    put("skip", fault.skip);
    put("count", fault.count);
    putSeconds("unread", fault.unread);
    putSeconds("late", fault.late);
    putSeconds("drip_head", fault.dripHead);
    putSeconds("drip", fault.drip);
    putSeconds("stall", fault.stall);
    putFlag("truncate", fault.truncate);
    putFlag("hang_up", fault.hangUp);
    putFlag("reset", fault.reset);
    put("raw", fault.raw);
    put("head_size", fault.headSize);
    put("length", fault.length);
    put("framing", fault.framing);
    put("status", fault.status);
    put("redirect", fault.redirect);
    putFlag("done", fault.done);
    put("body", fault.body);
    put("patch", fault.patch);
    put("size", fault.size);
    putFlag("opposite", fault.opposite);
    return document;
}

} // namespace vesk::sim

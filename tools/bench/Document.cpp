#include "tools/bench/Document.h"

namespace vesk::bench {

namespace {

constexpr int usualBays = 3;
constexpr int usualPhones = 2;
constexpr int manyBays = 10'000;
constexpr int manyPhones = 10'000;
constexpr int frames = 300;

// Put together as text, since ten thousand bays are written at each answer.
constexpr auto head = R"({"deep_scan_enabled":true,"device":"bench","device_id":"bench",
"duty_percent":40,"cooldown_seconds":0,"workers":2,"configured_workers":3,
"model":"vision-language:7b",
"services":{"deep_scan":true,"video":true,"audio":true,"ocr":true},
"video_backend":{"model":"SmolVLM2-500M-Video","model_ready":true},
"audio_backend":{"model":"MIT/ast-finetuned-audioset","model_ready":true},
"activity_policy":{"performance_mode":"automatic","thermal_state":"nominal",
"configured_duty_percent":40,"active_duty_percent":15,"idle_ceiling_percent":65,
"duty_percent":40,"effective_duty_percent":40,"configured_workers":3,"workers":2,
"effective_workers":2,"reason":"Light use"})";

std::string phone(int number) {
    const std::string name = std::to_string(number);
    return R"({"device_id":"phone-)" + name + R"(","name":"Phone )" + name
           + R"(","last_seen_seconds":4})";
}

std::string restingBay(int number) {
    return R"({"slot":)" + std::to_string(number)
           + R"(,"state":"idle","phase":"ready","completed":10,"failed":0})";
}

std::string busyBay(int number, int step) {
    const int frame = step % frames + 1;
    return R"({"slot":)" + std::to_string(number)
           + R"(,"state":"busy","phase":"processing","stage":"describe","media_kind":"video",)"
             R"("model":"SmolVLM2-500M-Video","job":"clip-7@1","source_device":"phone-1",)"
             R"("progress_current":)"
           + std::to_string(frame) + R"(,"progress_total":)" + std::to_string(frames)
           + R"(,"position_ms":)" + std::to_string(frame * 500) + R"(,"elapsed_ms":)"
           + std::to_string(step * 1500) + R"(,"completed":12,"failed":0})";
}

/// `element(1)` to `element(count)` under `key`.
template<typename Element>
std::string list(const char* key, int count, Element element) {
    std::string text = std::string(",\"") + key + "\":[";
    for (int number = 1; number <= count; ++number) {
        if (number > 1) {
            text += ',';
        }
        text += element(number);
    }
    return text + ']';
}

} // namespace

std::string healthText(Document document, int fetch) {
    const bool large = document == Document::Large;
    const int step = document == Document::Still ? 0 : fetch;
    const auto bay = [=](int number) {
        return document == Document::Resting ? restingBay(number) : busyBay(number, step);
    };
    return head + list("connected_devices", large ? manyPhones : usualPhones, phone)
           + list("slots", large ? manyBays : usualBays, bay) + '}';
}

} // namespace vesk::bench

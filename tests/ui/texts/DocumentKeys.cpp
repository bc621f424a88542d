#include "tests/ui/texts/DocumentKeys.h"

namespace vesk {

const QList<Key>& documentKeys() {
    static const QList<Key> slotKeys{
        {"slot", KeyType::bay},
        {"state", KeyType::state},
        {"phase", KeyType::word},
        {"stage", KeyType::word},
        {"media_kind", KeyType::word},
        {"model", KeyType::string},
        {"job", KeyType::string},
        {"position_ms", KeyType::integer},
        {"progress_current", KeyType::integer},
        {"progress_total", KeyType::integer},
        {"elapsed_ms", KeyType::integer},
        {"source_device", KeyType::string},
        {"last_stage", KeyType::word},
        {"last_media_kind", KeyType::word},
        {"last_finished_seconds_ago", KeyType::integer},
        {"completed", KeyType::count},
        {"failed", KeyType::count},
    };
    static const QList<Key> deviceKeys{
        {"device_id", KeyType::string},
        {"name", KeyType::string},
        {"last_seen_seconds", KeyType::integer},
    };
    static const QList<Key> policyKeys{
        {"performance_mode", KeyType::word},
        {"thermal_state", KeyType::string},
        {"configured_duty_percent", KeyType::integer},
        {"active_duty_percent", KeyType::integer},
        {"duty_percent", KeyType::integer},
        {"effective_duty_percent", KeyType::integer},
        {"idle_ceiling_percent", KeyType::integer},
        {"configured_workers", KeyType::integer},
        {"workers", KeyType::integer},
        {"effective_workers", KeyType::integer},
        {"reason", KeyType::string},
    };
    static const QList<Key> backendKeys{
        {"model", KeyType::string},
        {"model_ready", KeyType::boolean},
    };
    static const QList<Key> keys{
        {"deep_scan_enabled", KeyType::boolean},
        {"slots", KeyType::list, slotKeys},
        {"connected_devices", KeyType::list, deviceKeys},
        {"cooldown_seconds", KeyType::cooldown},
        {"cooldown_cap_seconds", KeyType::number},
        {"services", KeyType::flags},
        {"video_backend", KeyType::dictionary, backendKeys},
        {"audio_backend", KeyType::dictionary, backendKeys},
        {"activity_policy", KeyType::dictionary, policyKeys},
        {"duty_percent", KeyType::integer},
        {"workers", KeyType::integer},
        {"configured_workers", KeyType::integer},
        {"model", KeyType::string},
        {"device_id", KeyType::string},
        {"device", KeyType::string},
    };
    return keys;
}

} // namespace vesk

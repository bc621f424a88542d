#pragma once

#include <QString>

#include <optional>

namespace vesk {

/// One processing bay as the service describes it. A member is empty where the service left it out
/// or sent another type.
struct SlotRecord {
    std::optional<qint64> slot;   ///< number of the bay
    std::optional<QString> state; ///< "idle", "busy" or "waiting"
    std::optional<QString> phase; ///< step of the job
    std::optional<QString> stage; ///< kind of pass
    std::optional<QString> job;   ///< name of the job
    std::optional<QString> mediaKind;
    std::optional<QString> model;          ///< of the running pass
    std::optional<QString> sourceDevice;   ///< phone that sent the job
    std::optional<qint64> progressCurrent; ///< frames done
    std::optional<qint64> progressTotal;   ///< frames in all
    std::optional<qint64> positionMs;      ///< of the frame in the video, in milliseconds
    std::optional<qint64> elapsedMs;       ///< time spent on the job, in milliseconds
    std::optional<qint64> completed;       ///< jobs returned since the service started
    std::optional<qint64> failed;          ///< jobs failed since the service started
    std::optional<QString> lastStage;      ///< `stage` of the last finished job
    std::optional<QString> lastMediaKind;  ///< `mediaKind` of that job
    std::optional<qint64> lastFinishedSecondsAgo;

    bool operator==(const SlotRecord&) const = default;
};

/// Whether the bay holds a job: its `state` is "busy" or "waiting".
[[nodiscard]] bool isActive(const SlotRecord& slot);

} // namespace vesk

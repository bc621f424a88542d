#pragma once

#include "agent/ServiceLocations.h"
#include "agent/Tool.h"

#include <QObject>

#include <functional>
#include <optional>

namespace vesk {

/// Starts the service: restarts it in place when the service manager knows it, else loads it from
/// the agent file or, where there is none, from the template. A start that has begun is completed,
/// even when this and the program are gone. Main thread.
class ServiceStart final : public QObject {
    Q_OBJECT

public:
    /// Gets how the start failed, nothing when it succeeded.
    using Done = std::function<void(const std::optional<ServiceError>&)>;

    /// `tool` must outlive this.
    ServiceStart(Tool& tool, ServiceLocations locations);

    /// Whether a start is under way. A tool that hangs keeps it so.
    [[nodiscard]] bool starting() const noexcept { return starting_; }

    /// Returns at once. Ignored, `done` dropped, while a start is under way.
    void startService(Done done);

private:
    Tool& tool_;
    ServiceLocations locations_;
    bool starting_ = false;
};

} // namespace vesk

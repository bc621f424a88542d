#pragma once

#include <QString>

namespace vesk {

/// Where the service's files live under a user's home folder. Nothing here creates anything.
class ServiceLocations {
public:
    /// The service's name for the service manager.
    static constexpr QStringView serviceLabel = u"com.halvex.corvala.integration.worker105";

    explicit ServiceLocations(QString home);

    [[nodiscard]] QString supportDirectory() const;

    /// The launch configuration that the service's installer left.
    [[nodiscard]] QString templateURL() const;

    /// Its copy in the folder that is loaded at login.
    [[nodiscard]] QString agentURL() const;

    /// Whether anything exists at `agentURL`; a link that leads nowhere does not count.
    [[nodiscard]] bool startsAtLogin() const;

private:
    QString home_;
};

} // namespace vesk

#pragma once

#include "service/HealthDocument.h"

#include <QList>
#include <QString>

#include <optional>

namespace vesk {

/// One thing on a page of the setup sheet.
struct SetupItem {
    enum class Kind {
        paragraph,
        mode,       ///< the choice between "Basic" and "Advanced"
        readiness,  ///< how the scan engines stand
        startCheck, ///< the button that starts the service and looks again
        deep,       ///< the check box for detailed analysis
        login,      ///< the check box for starting at login
    };

    Kind kind;
    QString text; ///< of a paragraph; empty for the others

    bool operator==(const SetupItem&) const = default;
};

/// What one page of the setup sheet shows.
struct SetupPage {
    QString stepLabel;
    QString heading;
    QList<SetupItem> body; ///< in order
    QString nextTitle;
    bool backShown = true;

    bool operator==(const SetupPage&) const = default;
};

/// Index of the last page; the first is 0.
inline constexpr int lastSetupStep = 3;

/// `step`: 0 to lastSetupStep.
[[nodiscard]] SetupPage
setupPage(int step, bool advanced, const HealthDocument& lastHealth, qint64 port);

/// How the scan engines stand; an empty `backendReady` reads as being checked.
[[nodiscard]] QString
readinessText(const HealthDocument& lastHealth, bool online, std::optional<bool> backendReady);

} // namespace vesk

#pragma once

#include "model/HealthDocument.h"

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

/// Where in the setup sheet a person is.
struct SetupPlace {
    int step = 0;          ///< 0 to lastSetupStep
    bool advanced = false; ///< the choice of detail
    bool applying = false; ///< the choices are being applied
};

[[nodiscard]] SetupPage setupPage(SetupPlace place, const HealthDocument& lastHealth, qint64 port);

/// Title of the button that goes on.
[[nodiscard]] QString setupNextTitle(SetupPlace place);

/// What the readiness of the scan engines depends on besides the document.
struct ReadinessState {
    bool online = false;              ///< the service answers
    std::optional<bool> backendReady; ///< the photo engine is usable; empty while it is checked
};

/// How the scan engines stand.
[[nodiscard]] QString readinessText(const HealthDocument& lastHealth, ReadinessState state);

} // namespace vesk

#pragma once

#include "ui/texts/Face.h"
#include "ui/texts/ServiceFacts.h"

#include <QString>

namespace vesk {

/// Every text of the dashboard and of the tray item, as a value. It starts as what is shown before
/// the first answer; each function below gives the one to show after a change.
struct Dashboard {
    Dashboard();

    bool checking = true; ///< nothing has answered or failed to yet
    QString status;
    QString statusDetail;
    ConnectionFace connection;
    QString services;
    QString engines;
    QString budget;
    QString total;
    QString network;
    ButtonFace startButton;
    ToggleFace deepToggle;

    QString trayState; ///< first entry of the tray menu
    ButtonFace trayAction;
    QString trayTitle; ///< beside the glyph; empty, or a space and the count of active bays
    QString trayToolTip;

    bool operator==(const Dashboard&) const = default;
};

/// After a good answer, `facts` holding it already.
[[nodiscard]] Dashboard connectedDashboard(const ServiceFacts& facts);

/// After a miss that may be a delay: all that was confirmed stays.
[[nodiscard]] Dashboard reconnectingDashboard(Dashboard last);

/// After the service was given up, and again while it stays away.
[[nodiscard]] Dashboard disconnectedDashboard(Dashboard last, const ServiceFacts& facts);

/// From the moment in which a start of the service begins.
[[nodiscard]] Dashboard startingDashboard(Dashboard last);

/// From the moment in which a service without a live listener is restarted.
[[nodiscard]] Dashboard recoveringDashboard(Dashboard last);

/// After a person switched the check box: as it was left, until the service confirms or refuses.
[[nodiscard]] Dashboard toggledDashboard(Dashboard last, bool deep);

/// While a deep-job change is under way.
[[nodiscard]] Dashboard changingPolicyDashboard(Dashboard last);

/// After a deep-job change failed: back to what was confirmed.
[[nodiscard]] Dashboard unchangedPolicyDashboard(Dashboard last, const ServiceFacts& facts);

} // namespace vesk

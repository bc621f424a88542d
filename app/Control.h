#pragma once

#include "agent/ListenerRecovery.h"
#include "agent/ServiceLocations.h"
#include "agent/ServiceStart.h"
#include "app/Screens.h"
#include "model/Timing.h"
#include "service/BackendCheck.h"
#include "service/DeepJobSwitch.h"
#include "service/RefreshLoop.h"
#include "service/ServiceClient.h"
#include "service/ServiceLog.h"
#include "ui/settings/SettingsController.h"
#include "ui/setup/SetupController.h"
#include "ui/texts/Dashboard.h"
#include "ui/texts/ServiceFacts.h"

#include <QObject>

#include <functional>
#include <optional>

class QSettings;

namespace vesk {

class Exchange;
class Tool;

/// The conductor: holds the facts, decides when something happens, and hands the computed values
/// to the screens. Main thread only.
class Control final : public QObject, public SettingsController, public SetupController {
    Q_OBJECT

public:
    /// What the world brings in.
    struct Surroundings {
        qint64 port = 0;
        QString home;
        QString hostName;
        Clock clock;
        Exchange& exchange; ///< with the service; this and what follows outlives the controller
        Tool& tool;         ///< the service manager's
        QSettings& defaults;
        bool setupRequested = false;
    };

    explicit Control(Surroundings surroundings);
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    ~Control() override;

    /// Shows the window and starts everything.
    void applicationDidFinishLaunching();

    /// Shows the window, in front of the others, and fetches at once.
    void openDashboard();

    /// What the start button does: starts the service, or pauses or resumes deep jobs.
    void start();

    /// The desktop's start action at the launch of the program: starts the service after the first
    /// health miss, and leaves it as it is after a good answer.
    void startIfStopped();

    /// The desktop's start action in the running program: start(), but startIfStopped() before the
    /// first health answer or miss.
    void startWhenKnown();

    void showSettings();

    /// Opens the setup sheet unless it is open.
    void showSetup();

    // For the sheets.
    [[nodiscard]] bool online() const override { return online_; }
    [[nodiscard]] bool accepting() const override { return accepting_; }
    [[nodiscard]] const HealthDocument& lastHealth() const override { return lastHealth_; }
    [[nodiscard]] std::optional<bool> backendReady() const override;
    [[nodiscard]] qint64 port() const override { return surroundings_.port; }
    [[nodiscard]] bool startsAtLogin() const override;
    [[nodiscard]] std::optional<QString> configureLogin(bool enabled) override;
    void setDeep(bool enabled, std::function<void(bool)> completion) override;
    void setPerformanceMode(const QString& mode, std::function<void(bool)> completion) override;
    void startService(std::function<void()> completion) override;
    void showError(const QString& message) override;
    void setupCompleted() override;
    void setupClosed() override;

private:
    void connectService();
    void connectScreens();

    /// Whether the first health answer or miss has come, and what waits for it.
    enum class FirstCheck { UnderWay, UnderWayBeforeStart, Done };

    void render(const ConfirmedHealth& health);
    void noteHealthMiss();
    void noteBackendAnswer();
    void showConnected();
    void showDisconnected();
    void show(Dashboard next);
    void change(bool deep);
    void tellConnection(const Connection& before) const;

    [[nodiscard]] Attention attention() const;
    [[nodiscard]] RefreshLoop::Situation situation() const;
    [[nodiscard]] ServiceFacts facts() const;
    [[nodiscard]] Connection connection() const;

    Surroundings surroundings_;
    ServiceLocations locations_;

    FirstCheck firstCheck_ = FirstCheck::UnderWay;
    bool online_ = false;
    bool accepting_ = false;
    HealthDocument lastHealth_;
    qint64 consecutiveHealthMisses_ = 0;
    Dashboard dashboard_;
    std::optional<ServiceFacts> connectedFacts_; ///< what is on screen says just these

    ServiceClient client_;
    RefreshLoop loop_;
    BackendCheck backend_;
    DeepJobSwitch deepJobs_;
    ServiceStart start_;
    ListenerRecovery recovery_;

    Screens screens_;
};

} // namespace vesk

#pragma once

#include "agent/Launchctl.h"
#include "agent/ListenerRecovery.h"
#include "agent/ServiceLocations.h"
#include "agent/ServiceStart.h"
#include "model/Timing.h"
#include "service/BackendCheck.h"
#include "service/DeepJobSwitch.h"
#include "service/RefreshLoop.h"
#include "service/ServiceClient.h"
#include "ui/dashboard/DashboardWindow.h"
#include "ui/settings/SettingsController.h"
#include "ui/setup/SetupController.h"
#include "ui/texts/Dashboard.h"
#include "ui/texts/ServiceFacts.h"
#include "ui/tray/TrayItem.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>

class QSettings;

namespace vesk {

class PerformanceSettings;
class SetupWizard;

/// The conductor: holds the facts, decides when something happens, and hands the computed values
/// to the views. Main thread only.
class Control final : public QObject, public SettingsController, public SetupController {
    Q_OBJECT

public:
    /// What the world brings in.
    struct Surroundings {
        qint64 port = 0;
        QString home;
        QString toolPath; ///< the service manager's tool
        QString hostName;
        Clock clock;
        QSettings& defaults; ///< outlives the controller
        bool setupRequested = false;
    };

    explicit Control(Surroundings surroundings);
    ~Control() override;

    /// Shows the window and starts everything.
    void applicationDidFinishLaunching();

    void openDashboard();

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
    void connectViews();

    void render(const ConfirmedHealth& health);
    void noteHealthMiss();
    void noteBackendAnswer();
    void showDisconnected();
    void show(Dashboard next);
    void refreshSheets();

    void start();
    void change(bool deep);
    void showSettings();
    void showSetup();

    [[nodiscard]] bool dashboardVisible() const;
    [[nodiscard]] RefreshLoop::Situation situation() const;
    [[nodiscard]] ServiceFacts facts() const;

    Surroundings surroundings_;
    ServiceLocations locations_;

    bool online_ = false;
    bool accepting_ = false;
    HealthDocument lastHealth_;
    qint64 consecutiveHealthMisses_ = 0;
    Dashboard dashboard_;

    ServiceClient client_;
    RefreshLoop loop_;
    BackendCheck backend_;
    DeepJobSwitch deepJobs_;
    Launchctl launchctl_;
    ServiceStart start_;
    ListenerRecovery recovery_;

    TrayItem tray_;
    DashboardWindow window_;
    std::unique_ptr<PerformanceSettings> settingsPanel_;
    std::unique_ptr<SetupWizard> setup_;
};

} // namespace vesk

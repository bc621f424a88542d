#pragma once

#include "ui/dashboard/DashboardWindow.h"
#include "ui/texts/Dashboard.h"
#include "ui/texts/ServiceFacts.h"
#include "ui/tray/TrayItem.h"

#include <QAction>
#include <QObject>

#include <memory>
#include <optional>

class QDialog;

namespace vesk {

class PerformanceSettings;
class SettingsController;
class SetupController;
class SetupWizard;

/// All that a person sees and presses: the window, the tray item, the sheets on the window and the
/// alerts on those. It decides nothing about the service. Main thread only.
class Screens final : public QObject {
    Q_OBJECT

public:
    /// What the sheets ask of their controllers; both outlive this.
    Screens(SettingsController& settings, SetupController& setup);
    Screens(const Screens&) = delete;
    Screens& operator=(const Screens&) = delete;
    ~Screens() override;

    /// Puts the texts on the tray item, and on the window once that is seen.
    void show(const Dashboard& dashboard, const ServiceFacts& facts);

    /// Has the open sheets show what their controllers know now.
    void refreshSheets();

    /// Brings the window to the front.
    void openDashboard();

    void openSettings();

    /// Opens a new setup sheet. Not while there is one.
    void openSetup();

    /// From opening the setup sheet until closeSetup().
    [[nodiscard]] bool setupIsOpen() const { return setup_ != nullptr; }

    /// Lets go of a setup sheet that has ended.
    void closeSetup();

    /// Shows one failure on the window that a person looks at, and does not wait.
    void showError(const QString& message);

    /// Live state can be seen: in the window, or because the tray menu is open.
    [[nodiscard]] bool dashboardVisible() const;

signals:
    void openPressed();
    void startPressed();
    /// A person switched deep jobs.
    void toggleChanged(bool on);
    void settingsPressed();
    void setupPressed();
    void quitPressed();

    void menuWillOpen();
    void menuDidClose();
    /// The window came into sight or went out of it.
    void visibilityChanged();

private:
    struct Unseen {
        Dashboard dashboard;
        ServiceFacts facts;
    };

    void showPanel();
    void connectTray();
    void connectWindow();
    void noteVisibility();
    void makeKeys();
    void giveKeys(QDialog& sheet);
    void tellOpening(const QDialog& dialog);

    SettingsController& settingsController_;
    SetupController& setupController_;
    TrayItem tray_;
    DashboardWindow window_;
    std::optional<Unseen> unseen_; ///< what the window does not show yet, as nobody sees it
    QAction settingsKey_;
    QAction closeKey_;
    QAction quitKey_;
    std::unique_ptr<PerformanceSettings> settings_;
    std::unique_ptr<SetupWizard> setup_;
};

} // namespace vesk

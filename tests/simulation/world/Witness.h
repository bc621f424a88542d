#pragma once

#include "tests/simulation/SimulatedExchange.h"
#include "tests/simulation/SimulatedTool.h"
#include "tests/simulation/world/Cadence.h"
#include "tests/simulation/world/Knowledge.h"
#include "tests/simulation/world/Moment.h"
#include "tests/simulation/world/Placement.h"
#include "ui/texts/CompactPanel.h"
#include "ui/texts/SetupPages.h"

#include <QObject>
#include <QTimer>

#include <map>
#include <memory>

namespace vesk {

/// Follows everything that goes into the controller and everything that comes out of it, and knows
/// at each moment what it has to know, to show and to do: a model of its own, that asks the product
/// only for the words of a state.
class Witness final : public QObject {
    Q_OBJECT

public:
    /// What stays over restarts of the program.
    struct Lasting {
        bool setupVisited = false;
        bool setupComplete = false;
        bool startsAtLogin = false;
        /// What a person is told when the login file cannot be made; empty when it can.
        QString loginFault;
    };

    Witness(qint64 port, QString host);

    // The life of the program.
    void launched(bool setupRequested, bool trayPresent);
    void seenFirst(const Screen& screen) { cadence_.watch(screen); }
    void ended();

    // What a person does, before the program learns of it.
    void openWindow();
    void closeWindow() { placement_.close(); }
    void pressStart();
    void askForStart();
    void askForStartAtLaunch();
    void switchDeep(bool on);
    void openSettings();
    void closeSettings();
    void pickMode(int mode);
    void openSetup();
    void setupNext();
    void setupBack();
    void setupSkip();
    void setupCheck();
    void setupDetail(bool advanced);
    void setupDeep(bool on);
    void setupLogin(bool on);
    void dismissAlert(const QString& text);
    void quit();

    // What passes between the program and its world.
    void sent(std::size_t number, const ServiceRequest& request);
    void answered(std::size_t number, const std::optional<QByteArray>& body);
    void runBegun(std::size_t number, const SimulatedTool::Run& run);
    void runEnds(std::size_t number, const ToolResult& result);
    void menuOpened() { cadence_.menuOpened(); }
    void menuClosed() { cadence_.menuClosed(); }
    void applicationActive() { cadence_.reload(); }
    void applicationHidden() { cadence_.schedule(); }
    void wrote(const QString& line);

    // What the desktop does, before the program learns of it.
    void windowRestored() { placement_.restored(); }
    void windowActivated() { placement_.activated(); }
    void trayChanged(const Placement::Tray& tray) { placement_.trayChanged(tray); }

    /// Something happened to the window that nobody in the program asked for.
    void disturbed() { moment_.disturbed = true; }

    /// Something may have changed what can be seen of the window.
    void glance() { cadence_.glance(); }

    /// From now on the service is up and well, with nothing in its way, until faults begin.
    void faultsEnd() { cadence_.faultsEnd(); }
    void faultsBegin() { cadence_.faultsBegin(); }

    /// It went down and up once more all the same.
    void serviceRestarts() { cadence_.serviceRestarts(); }

    Lasting& lasting() { return lasting_; }

    /// The moment that ends now, for those who judge it. Then the next one begins.
    [[nodiscard]] Moment& momentEnds();
    void nextMoment();

private:
    enum class Ask { health, diagnostics, policy, mode };

    struct Setup {
        int step = 0;
        bool deep = false;
        bool login = false;
        bool applying = false;
        bool chosen = false;
        int ticks = 0;
        bool advanced = false;
        SetupPage page;
        QString readiness;
    };

    void healthAnswered(const std::optional<QJsonObject>& document);
    void policyAnswered(const std::optional<QJsonObject>& document);
    void modeAnswered(const std::optional<QJsonObject>& document);
    void diagnosticsAnswered(const std::optional<QByteArray>& body);
    void render(const QJsonObject& document);
    void showConnected();
    void miss();
    void stopped();
    void changePolicy(bool on, bool fromSetup);
    void startService(bool fromCheck);
    void startEnds(const ServiceError* failure);
    void printEnds(const QString* text);
    void restartEnds(bool good);
    void apply();
    void tick();
    void setupFinished(bool confirmed);
    void closeSetup();
    void refreshReadiness();
    void writePage();
    void writePanel() { panel_ = compactPanel(dashboard_, factsOf(known_)); }
    void owe(const QString& what) { owed_.append(what); }
    void alert(const QString& text);
    void settle(const QString& what);
    void settleChange(const QString& what);
    [[nodiscard]] PanelTexts panelTexts() const;
    [[nodiscard]] SetupTexts setupTexts() const;
    [[nodiscard]] ScreenTexts texts() const;

    Knowledge known_;
    Cadence cadence_{known_};
    Placement placement_;
    Lasting lasting_;
    std::unique_ptr<QObject> life_;
    Dashboard dashboard_;
    CompactPanel panel_;

    std::map<std::size_t, Ask> underWay_;
    std::optional<TimePoint> checked_;

    bool policyWanted_ = false;
    bool policyFromSetup_ = false;

    bool settingsOpen_ = false;
    bool changingMode_ = false;
    int chosenMode_ = 0;

    std::optional<Setup> setup_;
    int setupsOpened_ = 0;
    QTimer setupTicks_;
    int checkOfSetup_ = 0; // the how-manieth setup wants to hear of the start, 0 for none

    bool firstCheckDone_ = false; ///< an answer or a miss has come
    bool startWaits_ = false;     ///< for the first miss

    std::map<std::size_t, QString> runs_;
    bool recovering_ = false;
    bool startFailed_ = false; ///< with no answer since
    int missesAtCheck_ = 0;    ///< when the manager was asked
    bool saidRunning_ = false;
    std::optional<TimePoint> lastRestart_;

    QStringList alerts_;
    QStringList owed_;
    Moment moment_;
};

} // namespace vesk

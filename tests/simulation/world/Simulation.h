#pragma once

#include "tests/simulation/world/Census.h"
#include "tests/simulation/world/Chronicle.h"
#include "tests/simulation/world/Dice.h"
#include "tests/simulation/world/Screen.h"
#include "tests/simulation/world/SimulatedDesktop.h"
#include "tests/simulation/world/SimulatedManager.h"
#include "tests/simulation/world/SimulatedPerson.h"
#include "tests/simulation/world/SimulatedService.h"
#include "tests/simulation/world/Witness.h"

#include <QSettings>
#include <QTemporaryDir>

#include <memory>

namespace vesk {

class Control;

/// The real controller with its real windows in a world that is made up from a seed: it is started,
/// used, left alone and ended, over and over, and judged after each moment.
class Simulation final : public QObject {
    Q_OBJECT

public:
    Simulation(Chronicle::Run run, bool trace);
    ~Simulation() override;

    /// Lets the hours pass. Does not come back when something that must hold does not.
    void run();

    [[nodiscard]] quint64 events() const { return chronicle_.events(); }

    /// The one that runs, for whoever tells of a crash.
    [[nodiscard]] static Simulation* running();
    [[nodiscard]] Chronicle& chronicle() { return chronicle_; }

    /// The program wrote a line to standard error.
    void wrote(const QString& line);

private:
    void awaitEnd();
    void launch();
    void performLaunchAction();
    [[nodiscard]] std::chrono::milliseconds soonOrLate();
    void judge();
    void takeCensus();
    void noteScreen(const PanelTexts& panel);

    void connectWorld();
    void planPerson();
    void planDesktop();
    void planService();
    void planWeather();
    void planCensus();
    void visit();
    void stirDesktop();
    void stirTray();
    void returnTray();
    void setTray(bool present);
    void after(
        std::chrono::milliseconds least, std::chrono::milliseconds most,
        void (Simulation::*what)());
    void changeLoginTemplate();

    Chronicle::Run run_;
    Dice dice_;
    Chronicle chronicle_;
    QTemporaryDir home_;
    QSettings defaults_;
    SimulatedExchange exchange_;
    SimulatedTool tool_;
    SimulatedService service_;
    SimulatedManager manager_;
    SimulatedDesktop desktop_;
    Witness witness_;
    SimulatedPerson person_;
    std::unique_ptr<Control> control_;
    std::unique_ptr<Screen> screen_;
    Census census_;
    TimePoint end_;
    std::optional<TimePoint> keysWrongSince_; ///< since when a blocked window has had focus
    TimePoint focusRefusedAt_;                ///< when the desktop did so last
    bool over_ = false;
    bool censusDue_ = false;
    int actionsLeft_ = 0;
    int turns_ = 0;
    QString lastConnection_;
};

} // namespace vesk

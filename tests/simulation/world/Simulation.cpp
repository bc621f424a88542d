#include "Simulation.h"

#include "tests/simulation/VirtualTime.h"
#include "tests/simulation/world/Invariants.h"

#include "agent/ServiceLocations.h"
#include "app/Control.h"
#include "app/PromptQuit.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qint64 port = 45835;
const QString hostName = u"bench"_s;
const QString setupCompleteKey = u"setupCompleteV2"_s;

/// More turns of the event loop than anything takes that comes to an end.
constexpr int mostTurns = 10'000;

Simulation* theSimulation = nullptr;

VirtualTime& virtualTime() {
    return VirtualTime::instance();
}

QByteArray launchAgent(const QString& label) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><key>Label"
           "</key><string>"
           + label.toUtf8() + "</string></dict></plist>\n";
}

} // namespace

Simulation::Simulation(Chronicle::Run run, bool trace)
    : run_(run),
      dice_(run.seed),
      chronicle_(run, trace),
      defaults_(home_.filePath(u"defaults.ini"_s), QSettings::IniFormat),
      service_(exchange_, dice_, chronicle_),
      manager_(tool_, service_, dice_, chronicle_),
      desktop_(chronicle_),
      witness_(port, hostName),
      person_(dice_, chronicle_, witness_) {
    theSimulation = this;
    QFile::link(u"/bin/true"_s, home_.filePath(u"vesk-agent-generator"_s));
    qputenv("SYSTEMD_GENERATOR_PATH", QFile::encodeName(home_.path()));
    connectWorld();
}

Simulation::~Simulation() {
    theSimulation = nullptr;
}

Simulation* Simulation::running() {
    return theSimulation;
}

void Simulation::connectWorld() {
    exchange_.requested = [this, take = exchange_.requested](auto number, const auto& request) {
        chronicle_.note(
            u"program",
            QString::fromUtf8(request.method + ' ' + request.path + ' ' + request.body));
        witness_.sent(number, request);
        take(number, request);
    };
    tool_.started = [this, take = tool_.started](auto number, const auto& run) {
        witness_.runBegun(number, run);
        take(number, run);
    };
    connect(&service_, &SimulatedService::answering, this, [this](auto number, const auto& body) {
        chronicle_.note(u"service", (body ? u"answers %1"_s : u"fails %1"_s).arg(number));
        witness_.answered(number, body);
    });
    connect(&service_, &SimulatedService::restarted, this, [this] { witness_.serviceRestarts(); });
    connect(&service_, &SimulatedService::answerPlanned, this, [this](auto delay) {
        if (dice_.oneIn(150)) {
            // In the very moment of the answer.
            QTimer::singleShot(delay, Qt::PreciseTimer, this, [this] { person_.act(); });
        }
    });
    connect(&manager_, &SimulatedManager::ending, &witness_, &Witness::runEnds);
    connect(&desktop_, &SimulatedDesktop::menuOpened, &witness_, &Witness::menuOpened);
    connect(&desktop_, &SimulatedDesktop::menuClosed, &witness_, &Witness::menuClosed);
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](auto state) {
        if (control_ == nullptr) {
            return;
        }
        if (state == Qt::ApplicationActive) {
            witness_.applicationActive();
        } else if (state == Qt::ApplicationHidden) {
            witness_.applicationHidden();
        }
    });
    connect(&virtualTime(), &QAbstractEventDispatcher::aboutToBlock, this, [this] {
        turns_ = 0;
        judge();
    });
    connect(&virtualTime(), &QAbstractEventDispatcher::awake, this, [this] {
        if (++turns_ > mostTurns) {
            chronicle_.fail("The program never spins.", u"a moment does not end"_s);
        }
    });
}

void Simulation::run() {
    end_ = virtualTime().now()
           + std::chrono::duration_cast<VirtualTime::Duration>(
               std::chrono::duration<double, std::ratio<3600>>(run_.hours));
    awaitEnd();
    changeLoginTemplate();
    planPerson();
    planDesktop();
    planService();
    planWeather();
    planCensus();
    while (!over_) {
        launch();
        if (!over_) {
            virtualTime().pass(dice_.between(1000ms, 600'000ms));
        }
    }
}

/// Hour by hour, since timers know no more than some weeks.
void Simulation::awaitEnd() {
    if (virtualTime().now() >= end_) {
        over_ = true;
        QCoreApplication::exit();
        return;
    }
    const auto left = std::min<VirtualTime::Duration>(end_ - virtualTime().now(), 1h);
    QTimer::singleShot(
        std::chrono::ceil<std::chrono::milliseconds>(left), Qt::PreciseTimer, this,
        &Simulation::awaitEnd);
}

void Simulation::launch() {
    chronicle_.note(u"person", u"starts the program"_s);
    desktop_.setIgnoresMinimising(dice_.oneIn(3));
    const bool setupRequested = dice_.oneIn(10);
    const PromptQuit promptQuit(*qApp);
    control_ = std::make_unique<Control>(Control::Surroundings{
        .port = port,
        .home = home_.path(),
        .hostName = hostName,
        .clock = [] { return virtualTime().now(); },
        .exchange = exchange_,
        .tool = tool_,
        .defaults = defaults_,
        .setupRequested = setupRequested});
    screen_ = std::make_unique<Screen>();
    witness_.launched(setupRequested, desktop_.trayPresent());
    witness_.seenFirst(*screen_);
    person_.meet(screen_.get(), control_.get());
    control_->applicationDidFinishLaunching();
    performLaunchAction();
    virtualTime().execute();
    if (!over_ && !witness_.momentEnds().quitPressed) {
        chronicle_.fail("The program runs until a person ends it.", u"it ended"_s);
    }
    chronicle_.note(u"program", u"ends"_s);
    person_.meet(nullptr, nullptr);
    witness_.ended();
    control_.reset();
    screen_.reset();
}

/// Around the first answer of a service that is well, or of one that is not.
std::chrono::milliseconds Simulation::soonOrLate() {
    return dice_.oneIn(2) ? 20ms : 5000ms;
}

/// Some launches are for an action of the desktop, and some are followed by one at once.
void Simulation::performLaunchAction() {
    switch (dice_.below(8)) {
    case 0:
    case 1:
        // The session bus may deliver the action after the first answer.
        QTimer::singleShot(
            dice_.between(0ms, soonOrLate()), Qt::PreciseTimer, control_.get(), [this] {
                chronicle_.note(u"person", u"started it for a start"_s);
                witness_.askForStartAtLaunch();
                control_->startIfStopped();
            });
        break;
    case 2:
        chronicle_.note(u"person", u"started it for the settings"_s);
        witness_.openSettings();
        control_->showSettings();
        break;
    case 3:
    case 4:
        QTimer::singleShot(
            dice_.between(0ms, soonOrLate()), Qt::PreciseTimer, control_.get(),
            [this] { person_.askForStart(); });
        break;
    default:
        break;
    }
}

void Simulation::judge() {
    if (control_ == nullptr) {
        return;
    }
    const Moment& moment = witness_.momentEnds();
    screen_->look();
    const ScreenTexts shown = screen_->read();
    if (desktop_.refusesFocus()) {
        focusRefusedAt_ = virtualTime().now();
    }
    if (shown.blockedWithKeys.isEmpty()) {
        keysWrongSince_.reset();
    } else if (!keysWrongSince_) {
        keysWrongSince_ = virtualTime().now();
    }
    const ServiceLocations locations(home_.path());
    const Witness::Lasting& lasting = witness_.lasting();
    const Evidence evidence{
        .moment = moment,
        .shown = shown,
        .keysWrongFor = virtualTime().now() - keysWrongSince_.value_or(virtualTime().now()),
        .focusGivenFor = virtualTime().now() - focusRefusedAt_,
        .serviceAnswers = service_.answers(),
        .serviceAccepts = service_.acceptsDeepJobs(),
        .setupVisitedKept = defaults_.value(u"setupVisitedV2"_s).toBool(),
        .setupCompleteKept = defaults_.value(setupCompleteKey).toBool(),
        .setupVisited = lasting.setupVisited,
        .setupComplete = lasting.setupComplete,
        .loginFileThere = moment.applied && QFileInfo::exists(locations.agentURL()),
        .startsAtLogin = lasting.startsAtLogin};
    noteScreen(shown.panel);
    for (const Invariant& invariant : invariants()) {
        const QString complaint = invariant.broken(evidence);
        if (!complaint.isEmpty()) {
            chronicle_.fail(invariant.sentence, complaint);
        }
    }
    if (moment.applied) {
        // As for somebody who comes to it for the first time.
        defaults_.remove(setupCompleteKey);
        witness_.lasting().setupComplete = false;
    }
    if (censusDue_ && !shown.setup && !shown.settings && shown.alerts.isEmpty()
        && QApplication::activePopupWidget() == nullptr && !moment.quitPressed) {
        takeCensus();
    }
    witness_.nextMoment();
}

void Simulation::takeCensus() {
    censusDue_ = false;
    exchange_.forget();
    tool_.forget();
    const QString grown = census_.take(virtualTime().timers());
    if (!grown.isEmpty()) {
        chronicle_.fail("Memory and objects do not grow from hour to hour.", grown);
    }
}

void Simulation::planCensus() {
    censusDue_ = true;
    after(3'600'000ms, 3'600'000ms, &Simulation::planCensus);
}

void Simulation::noteScreen(const PanelTexts& panel) {
    QString connection = panel.connection + u", "_s + panel.status;
    if (connection != lastConnection_) {
        lastConnection_ = std::move(connection);
        chronicle_.note(u"screen", lastConnection_);
    }
}

void Simulation::wrote(const QString& line) {
    chronicle_.note(u"program", u"writes "_s + line);
    witness_.wrote(line);
}

// --- What happens by itself ---------------------------------------------------------------------

void Simulation::after(
    std::chrono::milliseconds least, std::chrono::milliseconds most, void (Simulation::*what)()) {
    QTimer::singleShot(dice_.between(least, most), Qt::PreciseTimer, this, what);
}

void Simulation::planPerson() {
    person_.arrive();
    actionsLeft_ = dice_.between(3, 40);
    visit();
}

void Simulation::visit() {
    if (actionsLeft_-- > 0) {
        person_.act();
        after(1ms, dice_.oneIn(5) ? 30'000ms : 2500ms, &Simulation::visit);
        return;
    }
    if (dice_.oneIn(4)) {
        // For a moment, with everything as it is.
        after(1000ms, 900'000ms, &Simulation::planPerson);
        return;
    }
    person_.leave();
    after(60'000ms, 5'400'000ms, &Simulation::planPerson);
}

void Simulation::planDesktop() {
    stirDesktop();
    after(1000ms, 2'400'000ms, &Simulation::planDesktop);
}

void Simulation::stirDesktop() {
    if (screen_ == nullptr) {
        setTray(dice_.oneIn(2));
        return;
    }
    witness_.disturbed();
    QWidget& window = screen_->window();
    switch (dice_.below(10)) {
    case 0:
        stirTray();
        break;
    case 1:
    case 2:
        desktop_.setCovered(!desktop_.covered());
        break;
    case 3:
        if (!window.isVisible()) {
            break;
        }
        if (!window.isMinimized()) {
            desktop_.minimise(window);
        } else if (!screen_->windowShown()) {
            witness_.windowRestored();
            desktop_.restore(window);
        }
        break;
    case 4:
        desktop_.setHidden(QGuiApplication::applicationState() != Qt::ApplicationHidden);
        break;
    case 5:
        desktop_.sleep(dice_.between(1000ms, 3'600'000ms));
        witness_.serviceRestarts(); // for what it can know of that time
        break;
    case 6:
        if (screen_->windowShown()) {
            witness_.windowActivated();
            desktop_.giveKeyboard(window);
        }
        break;
    case 7:
        focusRefusedAt_ = virtualTime().now();
        desktop_.setRefusesFocus(!desktop_.refusesFocus());
        break;
    case 8:
        chronicle_.note(u"desktop", u"ends the session"_s);
        witness_.quit();
        QCoreApplication::quit();
        break;
    default:
        changeLoginTemplate();
    }
    witness_.glance();
}

/// A host that goes mostly comes back soon: a panel restarts, or the screen is unlocked.
void Simulation::stirTray() {
    const bool present = desktop_.trayPresent();
    setTray(!present);
    if (present && !dice_.oneIn(3)) {
        after(1ms, dice_.oneIn(2) ? 200ms : 20'000ms, &Simulation::returnTray);
    }
}

void Simulation::returnTray() {
    setTray(true);
}

void Simulation::setTray(bool present) {
    witness_.disturbed();
    witness_.trayChanged(
        {.present = present, .windowShown = screen_ != nullptr && screen_->windowShown()});
    desktop_.setTray(present);
    witness_.glance();
}

void Simulation::planService() {
    service_.change();
    after(1000ms, 900'000ms, &Simulation::planService);
}

void Simulation::planWeather() {
    const bool faults = dice_.oneIn(2);
    chronicle_.note(u"world", faults ? u"faults begin"_s : u"faults end"_s);
    manager_.setFaults(faults);
    if (faults) {
        service_.beginFaults();
        witness_.faultsBegin();
    } else {
        service_.endFaults(!dice_.oneIn(4));
        witness_.faultsEnd();
    }
    after(60'000ms, 3'600'000ms, &Simulation::planWeather);
}

void Simulation::changeLoginTemplate() {
    const ServiceLocations locations(home_.path());
    const QString path = locations.templateURL();
    QDir().mkpath(QFileInfo(path).path());
    const int kind = dice_.below(4);
    QString& fault = witness_.lasting().loginFault;
    if (kind == 0) {
        QFile::remove(path);
        fault = u"The file \"%1\" could not be read: No such file or directory"_s.arg(path);
        return;
    }
    QFile file(path);
    if (!file.open(QFile::WriteOnly)) {
        qFatal("the login file's template cannot be written");
    }
    file.write(launchAgent(kind == 1 ? u"another"_s : ServiceLocations::serviceLabel.toString()));
    fault = kind == 1 ? u"The worker launch configuration is missing or invalid."_s : QString();
}

} // namespace vesk

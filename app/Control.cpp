#include "app/Control.h"

#include "agent/LoginItem.h"
#include "agent/LoginObstacle.h"
#include "model/Checked.h"
#include "model/RefreshPolicy.h"

#include <QApplication>
#include <QSettings>
#include <QTimer>

#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto setupVisitedKey = "setupVisitedV2"_L1;
constexpr auto setupCompleteKey = "setupCompleteV2"_L1;

} // namespace

Control::Control(Surroundings surroundings)
    : surroundings_(std::move(surroundings)),
      locations_(surroundings_.home),
      client_(surroundings_.exchange, surroundings_.port),
      loop_(
          client_, [this] { return situation(); }, surroundings_.clock),
      backend_(client_, surroundings_.clock),
      deepJobs_(client_),
      start_(surroundings_.tool, locations_),
      recovery_(
          surroundings_.tool, [this] { return start_.starting(); }, surroundings_.clock),
      screens_(*this, *this) {
    connectService();
    connectScreens();
}

Control::~Control() = default;

void Control::connectService() {
    connect(&loop_, &RefreshLoop::healthReceived, this, [this](const ConfirmedHealth& health) {
        render(health);
        backend_.checkIfDue(attention());
    });
    connect(&loop_, &RefreshLoop::healthMissed, this, &Control::noteHealthMiss);
    connect(&backend_, &BackendCheck::answered, this, &Control::noteBackendAnswer);
    connect(&recovery_, &ListenerRecovery::restarting, this, [this] {
        show(recoveringDashboard(dashboard_));
    });
    connect(&recovery_, &ListenerRecovery::restarted, &loop_, &RefreshLoop::reload);
}

void Control::connectScreens() {
    connect(&screens_, &Screens::openPressed, this, &Control::openDashboard);
    connect(&screens_, &Screens::startPressed, this, &Control::start);
    connect(&screens_, &Screens::toggleChanged, this, &Control::change);
    connect(&screens_, &Screens::settingsPressed, this, &Control::showSettings);
    connect(&screens_, &Screens::setupPressed, this, &Control::showSetup);
    connect(&screens_, &Screens::quitPressed, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    connect(&screens_, &Screens::menuWillOpen, &loop_, &RefreshLoop::reload);
    connect(&screens_, &Screens::menuDidClose, &loop_, &RefreshLoop::scheduleRefresh);
    connect(&screens_, &Screens::visibilityChanged, this, [this] {
        if (screens_.dashboardVisible()) {
            loop_.reload();
        } else {
            loop_.scheduleRefresh();
        }
    });
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](auto state) {
        if (state == Qt::ApplicationActive) {
            loop_.reload();
        } else if (state == Qt::ApplicationHidden) {
            loop_.scheduleRefresh();
        }
    });
}

void Control::applicationDidFinishLaunching() {
    openDashboard();
    const QSettings& defaults = surroundings_.defaults;
    if (surroundings_.setupRequested || !defaults.value(setupVisitedKey).toBool()) {
        QTimer::singleShot(500ms, this, &Control::showSetup);
    }
}

void Control::openDashboard() {
    screens_.openDashboard();
    loop_.reload();
}

std::optional<bool> Control::backendReady() const {
    return backend_.backendReady();
}

bool Control::startsAtLogin() const {
    return locations_.startsAtLogin();
}

std::optional<QString> Control::configureLogin(bool enabled) {
    auto error = enabled ? loginObstacle() : std::nullopt;
    if (!error) {
        error = vesk::configureLogin(locations_, enabled);
    }
    return error ? std::optional(error->description) : std::nullopt;
}

void Control::setDeep(bool enabled, std::function<void(bool)> completion) {
    if (deepJobs_.changingPolicy()) {
        if (completion) {
            completion(false);
        }
        return;
    }
    deepJobs_.send(
        enabled, [this, enabled, completion = std::move(completion)](const auto& answer) {
            if (answer) {
                render(*answer);
            } else {
                show(unchangedPolicyDashboard(dashboard_, facts()));
            }
            if (completion) {
                completion(answer && answer->deep == enabled);
            }
            if (!answer) {
                showError(u"Could not change deep-job acceptance. The saved policy has not been "
                          "confirmed."_s);
            }
            loop_.scheduleRefresh();
        });
    show(changingPolicyDashboard(dashboard_));
}

void Control::setPerformanceMode(const QString& mode, std::function<void(bool)> completion) {
    if (!online_) {
        if (completion) {
            completion(false);
        }
        return;
    }
    client_.postPerformanceMode(
        mode, this, [this, completion = std::move(completion)](const auto& answer) {
            if (answer) {
                render(*answer);
            }
            if (completion) {
                completion(answer.has_value());
            }
        });
}

void Control::startService(std::function<void()> completion) {
    if (start_.starting()) {
        return;
    }
    if (firstCheck_ == FirstCheck::UnderWayBeforeStart) {
        firstCheck_ = FirstCheck::UnderWay;
    }
    start_.startService(
        [this, completion = std::move(completion)](const std::optional<ServiceError>& error) {
            if (error) {
                showDisconnected();
                showError(error->description);
                return;
            }
            loop_.reload();
            if (completion) {
                completion();
            }
        });
    show(startingDashboard(dashboard_));
}

void Control::showError(const QString& message) {
    screens_.showError(message);
}

void Control::setupCompleted() {
    surroundings_.defaults.setValue(setupCompleteKey, true);
}

void Control::setupClosed() {
    screens_.closeSetup();
    loop_.scheduleRefresh();
}

void Control::render(const ConfirmedHealth& health) {
    const Connection before = connection();
    firstCheck_ = FirstCheck::Done;
    consecutiveHealthMisses_ = 0;
    lastHealth_ = health.document;
    online_ = true;
    accepting_ = health.deep;
    tellConnection(before);
    showConnected();
}

void Control::noteHealthMiss() {
    const Connection before = connection();
    consecutiveHealthMisses_ =
        checkedCount(sum(consecutiveHealthMisses_, 1), "the missed health checks");
    recovery_.recoverStaleListenerIfNeeded(consecutiveHealthMisses_);
    if (online_ && consecutiveHealthMisses_ < RefreshPolicy::offlineAfterMisses) {
        show(reconnectingDashboard(dashboard_));
    } else {
        showDisconnected();
    }
    tellConnection(before);
    if (std::exchange(firstCheck_, FirstCheck::Done) == FirstCheck::UnderWayBeforeStart) {
        startService({});
    }
}

void Control::noteBackendAnswer() {
    // While the service is late the answer must not be taken for a sign of life: the next good
    // fetch shows it.
    if (online_ && consecutiveHealthMisses_ == 0) {
        showConnected();
    }
}

void Control::showConnected() {
    ServiceFacts now = facts();
    if (now == connectedFacts_) {
        return;
    }
    show(connectedDashboard(now));
    connectedFacts_ = std::move(now);
    screens_.refreshSheets();
}

void Control::showDisconnected() {
    online_ = false;
    backend_.reset();
    show(disconnectedDashboard(dashboard_, facts()));
    screens_.refreshSheets();
}

void Control::show(Dashboard next) {
    dashboard_ = std::move(next);
    connectedFacts_.reset();
    screens_.show(dashboard_, facts());
}

void Control::start() {
    if (online_) {
        setDeep(!accepting_, {});
    } else {
        startService({});
    }
}

void Control::startIfStopped() {
    // Before the first answer online_ is false whether the service runs or not, and a start would
    // restart a healthy one.
    if (firstCheck_ != FirstCheck::Done) {
        firstCheck_ = FirstCheck::UnderWayBeforeStart;
    } else if (!online_) {
        startService({});
    }
}

void Control::startWhenKnown() {
    if (firstCheck_ == FirstCheck::Done) {
        start();
    } else {
        startIfStopped();
    }
}

void Control::change(bool deep) {
    show(toggledDashboard(dashboard_, deep));
    setDeep(deep, {});
}

void Control::showSettings() {
    screens_.openSettings();
}

void Control::showSetup() {
    if (screens_.setupIsOpen()) {
        return;
    }
    surroundings_.defaults.setValue(setupVisitedKey, true);
    screens_.openSetup();
    loop_.reload();
}

void Control::tellConnection(const Connection& before) const {
    if (stateOf(connection()) != stateOf(before)) {
        qCDebug(serviceLog).noquote() << connectionLine(before, connection());
    }
}

Attention Control::attention() const {
    return {.visible = screens_.dashboardVisible(), .setup = screens_.setupIsOpen()};
}

RefreshLoop::Situation Control::situation() const {
    return {
        .attention = attention(),
        .active = online_ && lastHealth_.bays.active() > 0,
        .changingPolicy = deepJobs_.changingPolicy()};
}

Connection Control::connection() const {
    return {.online = online_, .misses = consecutiveHealthMisses_};
}

ServiceFacts Control::facts() const {
    return {
        .lastHealth = lastHealth_,
        .online = online_,
        .accepting = accepting_,
        .changingPolicy = deepJobs_.changingPolicy(),
        .starting = start_.starting(),
        .backendReady = backend_.backendReady(),
        .port = surroundings_.port,
        .hostName = surroundings_.hostName};
}

} // namespace vesk

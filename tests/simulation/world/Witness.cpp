#include "Witness.h"

#include "service/HealthReader.h"
#include "tests/simulation/VirtualTime.h"
#include "ui/texts/SettingsPresentation.h"

#include <QJsonDocument>

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

TimePoint now() {
    return VirtualTime::instance().now();
}

std::optional<QJsonObject> goodDocument(const std::optional<QByteArray>& body) {
    if (!body) {
        return std::nullopt;
    }
    static QByteArray lastBody; // mostly it is the same
    static QJsonObject document;
    if (*body != lastBody) {
        lastBody = *body;
        document = QJsonDocument::fromJson(lastBody).object();
    }
    return document.value(u"deep_scan_enabled").isBool() ? std::optional(document) : std::nullopt;
}

/// A long message is cut.
QString alertText(const QString& message) {
    return message.size() > 10'000 ? message.left(10'000) + u'…' : message;
}

} // namespace

Witness::Witness(qint64 port, QString host) {
    known_.port = port;
    known_.host = std::move(host);
    setupTicks_.setTimerType(Qt::PreciseTimer);
    setupTicks_.setInterval(1s);
    connect(&setupTicks_, &QTimer::timeout, this, &Witness::tick);
}

void Witness::launched(bool setupRequested, bool trayPresent) {
    placement_.launched(trayPresent);
    life_ = std::make_unique<QObject>();
    dashboard_ = Dashboard();
    writePanel();
    if (setupRequested || !lasting_.setupVisited) {
        QTimer::singleShot(500ms, Qt::PreciseTimer, life_.get(), [this] { openSetup(); });
    }
    cadence_.launched();
}

void Witness::ended() {
    const Knowledge fresh{.port = known_.port, .host = known_.host};
    known_ = fresh;
    life_.reset();
    cadence_.ended();
    underWay_.clear();
    checked_.reset();
    settingsOpen_ = changingMode_ = false;
    setup_.reset();
    setupTicks_.stop();
    checkOfSetup_ = 0;
    runs_.clear();
    firstCheckDone_ = startWaits_ = false;
    recovering_ = saidRunning_ = startFailed_ = false;
    lastRestart_.reset();
    alerts_.clear();
    owed_.clear();
    moment_ = {};
}

// --- What is owed -------------------------------------------------------------------------------

void Witness::quit() {
    moment_.quitPressed = true;
}

void Witness::settle(const QString& what) {
    if (!owed_.removeOne(what)) {
        moment_.unasked.append(what);
    }
}

/// Only what the user does and the recovery owe such a request or run.
void Witness::settleChange(const QString& what) {
    if (!owed_.removeOne(what)) {
        moment_.unaskedChanges.append(what);
    }
}

void Witness::wrote(const QString& line) {
    settle(u"line: "_s + line);
}

// --- The service --------------------------------------------------------------------------------

void Witness::sent(std::size_t number, const ServiceRequest& request) {
    const QByteArray line = request.method + ' ' + request.path;
    const QJsonObject body = QJsonDocument::fromJson(request.body).object();
    if (line == "GET /v1/health") {
        moment_.fetches.append(cadence_.fetchBegins());
        underWay_[number] = Ask::health;
    } else if (line == "GET /v1/diagnostics") {
        settle(u"diagnostics"_s);
        checked_ = now();
        underWay_[number] = Ask::diagnostics;
    } else if (line == "POST /v1/local/services") {
        const auto ongoing =
            std::count_if(underWay_.begin(), underWay_.end(), [](const auto& each) {
                return each.second == Ask::policy;
            });
        moment_.changesUnderWay = std::max(moment_.changesUnderWay, static_cast<int>(ongoing) + 1);
        const bool value = body.value(u"deep_scan_enabled").toBool();
        if (policyFromSetup_ && setup_ && value != setup_->chosen) {
            moment_.setupPosted = value ? u"on"_s : u"off"_s;
        }
        settleChange(value ? u"policy on"_s : u"policy off"_s);
        underWay_[number] = Ask::policy;
    } else if (line == "POST /v1/local/performance") {
        settleChange(u"mode "_s + body.value(u"mode").toString());
        underWay_[number] = Ask::mode;
    } else {
        moment_.malformed.append(QString::fromUtf8(line));
    }
    if (request.port != known_.port || request.timeout != Cadence::patience
        || (request.method == "POST" && body.size() != 1)) {
        moment_.malformed.append(QString::fromUtf8(line));
    }
}

void Witness::answered(std::size_t number, const std::optional<QByteArray>& body) {
    const auto ask = underWay_.extract(number);
    if (ask.empty()) {
        return; // nobody waits for it any more
    }
    switch (ask.mapped()) {
    case Ask::health:
        healthAnswered(goodDocument(body));
        break;
    case Ask::diagnostics:
        diagnosticsAnswered(body);
        break;
    case Ask::policy:
        policyAnswered(goodDocument(body));
        break;
    case Ask::mode:
        modeAnswered(goodDocument(body));
        break;
    }
}

void Witness::healthAnswered(const std::optional<QJsonObject>& document) {
    cadence_.fetchEnds();
    if (document) {
        cadence_.fetchIsShown();
        render(*document);
        if (!checked_ || now() - *checked_ > cadence_.checkInterval()) {
            owe(u"diagnostics"_s);
        }
    } else {
        miss();
    }
    cadence_.schedule();
}

void Witness::diagnosticsAnswered(const std::optional<QByteArray>& body) {
    const QJsonObject backend =
        body ? QJsonDocument::fromJson(*body).object().value(u"backend").toObject() : QJsonObject();
    known_.backendReady =
        backend.value(u"reachable") == true && backend.value(u"model_ready") == true;
    // While the service is late it is no sign of life.
    if (known_.online && known_.misses == 0) {
        showConnected();
    }
}

void Witness::policyAnswered(const std::optional<QJsonObject>& document) {
    known_.changing = false;
    if (document) {
        render(*document);
    } else {
        dashboard_ = unchangedPolicyDashboard(dashboard_, factsOf(known_));
        writePanel();
        alert(u"Could not change deep-job acceptance. The saved policy has not been "
              "confirmed."_s);
    }
    if (cadence_.isFetching()) {
        // That one may bring what was before.
        cadence_.serviceRestarts();
    }
    if (policyFromSetup_) {
        setupFinished(document && known_.accepting == policyWanted_);
    }
    cadence_.schedule();
}

void Witness::modeAnswered(const std::optional<QJsonObject>& document) {
    changingMode_ = false;
    // Whatever was changed since it was sent, it may bring what was before.
    cadence_.serviceRestarts();
    if (document) {
        render(*document);
    } else {
        alert(u"Could not save processing mode. Please try again."_s);
    }
}

void Witness::render(const QJsonObject& document) {
    firstCheckDone_ = true;
    startWaits_ = false;
    known_.misses = 0;
    startFailed_ = false;
    known_.document = document;
    known_.lastHealth = readHealth(QJsonDocument(document).toJson())->document;
    known_.online = true;
    known_.accepting = document.value(u"deep_scan_enabled").toBool();
    showConnected();
}

void Witness::showConnected() {
    dashboard_ = connectedDashboard(factsOf(known_));
    writePanel();
    refreshReadiness();
}

void Witness::miss() {
    ++known_.misses;
    if (known_.misses >= 3 && !known_.starting && !recovering_) {
        recovering_ = true;
        missesAtCheck_ = known_.misses;
        owe(u"print"_s);
    }
    if (known_.online && known_.misses < 3) {
        dashboard_ = reconnectingDashboard(dashboard_);
        writePanel();
    } else {
        stopped();
    }
    firstCheckDone_ = true;
    if (startWaits_) {
        startService(false);
    }
}

void Witness::stopped() {
    known_.online = false;
    known_.backendReady.reset();
    checked_.reset();
    std::erase_if(underWay_, [](const auto& each) { return each.second == Ask::diagnostics; });
    dashboard_ = disconnectedDashboard(dashboard_, factsOf(known_));
    writePanel();
    refreshReadiness();
    cadence_.fetchIsShown();
}

// --- The person ---------------------------------------------------------------------------------

void Witness::pressStart() {
    if (known_.online) {
        changePolicy(!known_.accepting, false);
    } else {
        startService(false);
    }
}

void Witness::askForStart() {
    if (firstCheckDone_) {
        pressStart();
    } else {
        startWaits_ = true;
    }
}

void Witness::askForStartAtLaunch() {
    if (!firstCheckDone_) {
        startWaits_ = true;
    } else if (!known_.online) {
        startService(false);
    }
}

void Witness::switchDeep(bool on) {
    dashboard_ = toggledDashboard(dashboard_, on);
    changePolicy(on, false);
}

void Witness::changePolicy(bool on, bool fromSetup) {
    if (known_.changing) {
        if (fromSetup) {
            setupFinished(false);
        }
        return;
    }
    known_.changing = true;
    policyWanted_ = on;
    policyFromSetup_ = fromSetup;
    owe(on ? u"policy on"_s : u"policy off"_s);
    dashboard_ = changingPolicyDashboard(dashboard_);
    writePanel();
}

void Witness::openWindow() {
    placement_.open();
    cadence_.reload();
}

void Witness::openSettings() {
    placement_.open();
    settingsOpen_ = true;
    moment_.opened = true;
}

void Witness::closeSettings() {
    settingsOpen_ = false;
}

void Witness::pickMode(int mode) {
    if (changingMode_ || !known_.online) {
        return;
    }
    changingMode_ = true;
    chosenMode_ = mode;
    owe(u"mode "_s + performanceModes.at(static_cast<std::size_t>(mode)));
}

void Witness::alert(const QString& text) {
    placement_.open();
    alerts_.append(text);
    moment_.opened = true;
}

void Witness::dismissAlert(const QString& text) {
    alerts_.removeOne(text);
}

// --- Setup --------------------------------------------------------------------------------------

void Witness::openSetup() {
    if (setup_) {
        return;
    }
    ++setupsOpened_;
    placement_.open();
    lasting_.setupVisited = true;
    setup_ = Setup{
        .deep = !known_.online || known_.accepting,
        .login = lasting_.startsAtLogin,
        .page = {},
        .readiness = {}};
    writePage();
    moment_.opened = true;
    cadence_.setSetupOpen(true);
    cadence_.reload();
}

void Witness::setupNext() {
    if (setup_->applying) {
        return;
    }
    if (setup_->step == 3) {
        apply();
        return;
    }
    ++setup_->step;
    writePage();
}

void Witness::setupBack() {
    if (!setup_->applying && setup_->step > 0) {
        --setup_->step;
        writePage();
    }
}

void Witness::setupSkip() {
    if (!setup_->applying) {
        closeSetup();
    }
}

void Witness::setupDetail(bool advanced) {
    setup_->advanced = advanced;
    writePage();
}

void Witness::setupDeep(bool on) {
    setup_->deep = on;
}

void Witness::setupLogin(bool on) {
    setup_->login = on;
}

void Witness::setupCheck() {
    startService(true);
}

void Witness::refreshReadiness() {
    if (setup_) {
        setup_->readiness = readinessText(
            known_.lastHealth, {.online = known_.online, .backendReady = known_.backendReady});
    }
}

void Witness::writePage() {
    if (setup_) {
        setup_->page = setupPage(
            {.step = setup_->step, .advanced = setup_->advanced}, known_.lastHealth, known_.port);
        refreshReadiness();
    }
}

void Witness::closeSetup() {
    setup_.reset();
    setupTicks_.stop();
    cadence_.setSetupOpen(false);
    cadence_.schedule();
}

void Witness::apply() {
    if (setup_->login && !lasting_.loginFault.isEmpty()) {
        alert(lasting_.loginFault);
        return;
    }
    lasting_.startsAtLogin = setup_->login;
    moment_.applied = true;
    setup_->applying = true;
    setup_->chosen = setup_->deep;
    if (known_.online) {
        changePolicy(setup_->chosen, true);
        return;
    }
    startService(false);
    setup_->ticks = 0;
    setupTicks_.start();
}

void Witness::tick() {
    ++setup_->ticks;
    if (known_.online) {
        setupTicks_.stop();
        changePolicy(setup_->chosen, true);
    } else if (setup_->ticks == 20) {
        setupTicks_.stop();
        setup_->applying = false;
        alert(u"The worker did not become ready. Check the existing Python runtime and "
              "launch configuration, then retry."_s);
    }
}

void Witness::setupFinished(bool confirmed) {
    if (!confirmed) {
        setup_->applying = false;
        return;
    }
    lasting_.setupComplete = true;
    closeSetup();
}

// --- The service manager ------------------------------------------------------------------------

void Witness::startService(bool fromCheck) {
    if (known_.starting) {
        return;
    }
    startWaits_ = false;
    known_.starting = true;
    checkOfSetup_ = fromCheck ? setupsOpened_ : 0;
    owe(u"start"_s);
    dashboard_ = startingDashboard(dashboard_);
    writePanel();
}

void Witness::runBegun(std::size_t number, const SimulatedTool::Run& run) {
    const QString verb = run.script.isEmpty() ? run.arguments.value(0) : u"start"_s;
    const qsizetype arguments = verb == u"start" ? 4 : verb == u"print" ? 2 : 3;
    if (run.arguments.size() != arguments) {
        moment_.malformed.append(verb + u' ' + run.arguments.join(u' '));
    }
    if (verb == u"kickstart") {
        moment_.restarts.append(
            {.misses = missesAtCheck_,
             .saidRunning = saidRunning_,
             .starting = known_.starting,
             .sinceLast =
                 lastRestart_ ? std::optional<Seconds>(now() - *lastRestart_) : std::nullopt});
        lastRestart_ = now();
    }
    if (verb == u"print") {
        settle(verb);
    } else {
        settleChange(verb);
    }
    runs_[number] = verb;
}

void Witness::runEnds(std::size_t number, const ToolResult& result) {
    const auto run = runs_.extract(number);
    if (run.empty()) {
        return; // of a program that has ended
    }
    const auto* failure = std::get_if<ServiceError>(&result);
    if (run.mapped() == u"start") {
        startEnds(failure);
    } else if (run.mapped() == u"print") {
        printEnds(std::get_if<QString>(&result));
    } else {
        restartEnds(failure == nullptr);
        if (failure != nullptr) {
            owe(u"line: Corvala worker listener recovery failed: "_s
                + QString(
                      failure->description.endsWith(u'\n') ? failure->description.chopped(1)
                                                           : failure->description)
                      .replace(u'\n', u' '));
        }
    }
}

void Witness::startEnds(const ServiceError* failure) {
    known_.starting = false;
    if (failure != nullptr) {
        startFailed_ = true;
        stopped();
        alert(alertText(failure->description));
        return;
    }
    cadence_.reload();
    if (checkOfSetup_ == setupsOpened_) {
        writePage();
    }
}

void Witness::printEnds(const QString* text) {
    saidRunning_ = text != nullptr && text->contains(u"\tstate = running\n");
    const bool cool = !lastRestart_ || now() - *lastRestart_ >= 90s;
    if (!saidRunning_ || known_.starting || !cool) {
        recovering_ = false;
        return;
    }
    owe(u"kickstart"_s);
    dashboard_ = recoveringDashboard(dashboard_);
    writePanel();
}

void Witness::restartEnds(bool good) {
    if (!good) {
        recovering_ = false;
        return;
    }
    QTimer::singleShot(1s, Qt::PreciseTimer, life_.get(), [this] {
        recovering_ = false;
        cadence_.reload();
    });
}

// --- The end of a moment ------------------------------------------------------------------------

PanelTexts Witness::panelTexts() const {
    PanelTexts texts{
        .connection = panel_.connection.text,
        .status = panel_.compactStatus,
        .detail = panel_.statusDetail,
        .rack = panel_.compactRack,
        .devices = panel_.compactDevices,
        .summary = panel_.compactSummary,
        .rows = {},
        .meters = {},
        .start = panel_.compactStart.title,
        .startEnabled = panel_.compactStart.enabled,
        .toggle = panel_.compactToggle.state,
        .toggleEnabled = panel_.compactToggle.enabled,
        .trayState = dashboard_.trayState,
        .trayAction = dashboard_.trayAction.title,
        .trayActionEnabled = dashboard_.trayAction.enabled,
        .toolTip =
            dashboard_.trayToolTip.isEmpty() ? u"Corvala for Mac"_s : dashboard_.trayToolTip};
    for (std::size_t bay = 0; bay < texts.rows.size(); ++bay) {
        texts.rows.at(bay) = panel_.compactRows.at(bay).text;
        texts.meters.at(bay) = std::clamp(panel_.compactMeters.at(bay), 0.0, 1.0);
    }
    return texts;
}

SetupTexts Witness::setupTexts() const {
    QStringList paragraphs;
    for (const SetupItem& item : setup_->page.body) {
        if (item.kind == SetupItem::Kind::paragraph) {
            paragraphs.append(item.text);
        } else if (item.kind == SetupItem::Kind::readiness) {
            paragraphs.append(setup_->readiness);
        }
    }
    paragraphs.sort();
    return {
        .step = setup_->page.stepLabel,
        .next = setupNextTitle({.step = setup_->step, .applying = setup_->applying}),
        .nextEnabled = !setup_->applying,
        .choicesEnabled = !setup_->applying,
        .deep = setup_->deep,
        .login = setup_->login,
        .paragraphs = paragraphs};
}

ScreenTexts Witness::texts() const {
    ScreenTexts texts{.panel = panelTexts(), .settings = {}, .setup = {}, .alerts = alerts_};
    if (settingsOpen_) {
        const SettingsPresentation settings(
            known_.lastHealth, {.online = known_.online, .changing = changingMode_});
        texts.settings = {
            .mode = settings.mode.value_or(chosenMode_),
            .enabled = settings.enabled,
            .thermal = settings.thermal,
            .performance = settings.performance};
    }
    if (setup_) {
        texts.setup = setupTexts();
    }
    texts.alerts.sort();
    return texts;
}

Moment& Witness::momentEnds() {
    cadence_.judge(moment_);
    moment_.missing = owed_;
    moment_.missesInARow = known_.misses;
    moment_.online = known_.online;
    moment_.mayBeStopped = known_.misses >= 3 || startFailed_ || known_.document.isEmpty();
    moment_.changing = known_.changing;
    moment_.accepting = known_.accepting;
    moment_.lastWasGood = known_.online && known_.misses == 0;
    moment_.mustBeHidden = placement_.mustBeHidden();
    moment_.expected = texts();
    return moment_;
}

void Witness::nextMoment() {
    moment_ = {};
    owed_.clear();
    cadence_.nextMoment();
}

} // namespace vesk

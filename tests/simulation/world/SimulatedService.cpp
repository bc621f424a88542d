#include "SimulatedService.h"

#include "tests/simulation/world/ServiceDocument.h"

#include <QJsonDocument>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// How long an exchange waits before it gives up.
constexpr auto patience = 4000ms;

QString name(SimulatedService::State state) {
    switch (state) {
    case SimulatedService::State::down:
        return u"is down"_s;
    case SimulatedService::State::starting:
        return u"is starting"_s;
    case SimulatedService::State::up:
        return u"is up"_s;
    case SimulatedService::State::listenerDead:
        return u"has a dead listener"_s;
    case SimulatedService::State::frozen:
        return u"is frozen"_s;
    case SimulatedService::State::failing:
        return u"answers with errors"_s;
    }
    return {};
}

} // namespace

SimulatedService::SimulatedService(SimulatedExchange& exchange, Dice& dice, Chronicle& chronicle)
    : exchange_(exchange),
      dice_(dice),
      chronicle_(chronicle),
      mode_(u"automatic"_s),
      document_(serviceDocument(dice)),
      diagnostics_(serviceDiagnostics(dice)) {
    exchange_.requested = [this](std::size_t number, const ServiceRequest& request) {
        take(number, request);
    };
    start_.setSingleShot(true);
    start_.setTimerType(Qt::PreciseTimer);
    connect(&start_, &QTimer::timeout, this, [this] {
        emit restarted();
        // A restart does not always help.
        become(faults_ && dice_.oneIn(3) ? State::listenerDead : State::up);
    });
}

void SimulatedService::restart() {
    emit restarted();
    become(State::starting);
    start_.start(faults_ ? dice_.between(0ms, 30'000ms) : dice_.between(0ms, 2000ms));
}

void SimulatedService::change() {
    if (!faults_) {
        return;
    }
    switch (dice_.below(13)) {
    case 0:
    case 7:
        become(State::down);
        break;
    case 1:
        become(State::listenerDead);
        break;
    case 2:
        become(State::frozen);
        break;
    case 3:
        become(State::failing);
        break;
    case 4:
    case 5:
        workOn();
        break;
    case 6:
        // Another controller, or the service itself.
        accepting_ = !accepting_;
        health_.clear();
        chronicle_.note(u"service", accepting_ ? u"resumes deep jobs"_s : u"pauses deep jobs"_s);
        break;
    default:
        become(State::up);
    }
}

void SimulatedService::endFaults(bool up) {
    faults_ = false;
    become(up ? State::up : State::down);
}

void SimulatedService::become(State state) {
    start_.stop();
    if (state != state_) {
        state_ = state;
        chronicle_.note(u"service", name(state));
    }
}

void SimulatedService::workOn() {
    document_ = serviceDocument(dice_);
    health_.clear();
    diagnostics_ = serviceDiagnostics(dice_);
    chronicle_.note(u"service", u"goes on with its jobs"_s);
}

void SimulatedService::take(std::size_t number, const ServiceRequest& request) {
    Reply answer = reply(request);
    emit answerPlanned(answer.after);
    QTimer::singleShot(
        answer.after, Qt::PreciseTimer, this, [this, number, body = std::move(answer.body)] {
            emit answering(number, body);
            exchange_.end(number, body);
        });
}

SimulatedService::Reply SimulatedService::reply(const ServiceRequest& request) {
    const bool post = request.method == "POST";
    switch (state_) {
    case State::down:
    case State::starting:
    case State::listenerDead:
        return {dice_.between(1ms, 5ms), std::nullopt};
    case State::frozen:
        return {patience, std::nullopt};
    case State::failing:
        return {dice_.between(1ms, 50ms), std::nullopt};
    case State::up:
        break;
    }
    if (!faults_) {
        obey(request);
        return {dice_.between(1ms, 400ms), answerTo(request)};
    }
    if (dice_.oneIn(4)) {
        workOn();
    }
    if (post && dice_.oneIn(6)) {
        // Nothing came of it, or nobody hears what did.
        if (dice_.oneIn(2)) {
            obey(request);
        }
        return {dice_.oneIn(2) ? patience : dice_.between(1ms, 4000ms), std::nullopt};
    }
    if (post && dice_.oneIn(4)) {
        disobey(request);
    } else {
        obey(request);
    }
    switch (dice_.below(24)) {
    case 0:
        return {dice_.between(1ms, 4000ms), std::nullopt}; // gone between request and answer
    case 1:
        return {patience, std::nullopt}; // dripping
    case 2:
        return {dice_.between(1ms, 100ms), spoilt({})};
    case 3:
    case 4:
        return {dice_.between(400ms, patience - 1ms), answerTo(request)};
    default:
        return {dice_.between(1ms, 400ms), answerTo(request)};
    }
}

void SimulatedService::obey(const ServiceRequest& request) {
    if (request.body.isEmpty()) {
        return;
    }
    health_.clear();
    const QJsonObject wish = QJsonDocument::fromJson(request.body).object();
    if (request.path == "/v1/local/services") {
        accepting_ = wish.value(u"deep_scan_enabled").toBool();
    } else if (request.path == "/v1/local/performance") {
        mode_ = wish.value(u"mode").toString();
    }
}

/// It confirms the opposite of a switch, and the mode that was.
void SimulatedService::disobey(const ServiceRequest& request) {
    if (request.path == "/v1/local/services") {
        obey(request);
        accepting_ = !accepting_;
    }
}

QByteArray SimulatedService::answerTo(const ServiceRequest& request) {
    if (request.path == "/v1/diagnostics") {
        return QJsonDocument(diagnostics_).toJson(QJsonDocument::Compact);
    }
    const bool spoil = faults_ && dice_.oneIn(8);
    if (!spoil && !health_.isEmpty()) {
        return health_;
    }
    QJsonObject answer = document_;
    answer[u"deep_scan_enabled"_s] = accepting_;
    QJsonObject policy = answer.value(u"activity_policy").toObject();
    policy[u"performance_mode"_s] = mode_;
    answer[u"activity_policy"_s] = policy;
    if (spoil) {
        return QJsonDocument(withWrongType(answer, dice_)).toJson(QJsonDocument::Compact);
    }
    health_ = QJsonDocument(answer).toJson(QJsonDocument::Compact);
    return health_;
}

/// What is no health document.
QByteArray SimulatedService::spoilt(QJsonObject answer) {
    switch (dice_.below(5)) {
    case 0:
        return "";
    case 1:
        return "[true]";
    case 2:
        return "{\"deep_scan_enabled\": tr";
    case 3:
        answer[u"deep_scan_enabled"_s] = u"true"_s;
        break;
    default:
        break;
    }
    return QJsonDocument(answer).toJson(QJsonDocument::Compact);
}

} // namespace vesk

#pragma once

#include "tests/simulation/SimulatedExchange.h"
#include "tests/simulation/world/Chronicle.h"
#include "tests/simulation/world/Dice.h"

#include <QJsonObject>
#include <QObject>
#include <QTimer>

namespace vesk {

/// The service as the controller finds it: a state that changes by itself, jobs that go on, and
/// answers that may be late, wrong or none. Requests get their answers after a while.
class SimulatedService final : public QObject {
    Q_OBJECT

public:
    enum class State {
        down,
        starting, ///< up to half a minute
        up,
        listenerDead, ///< the process runs, nothing answers
        frozen,       ///< connections are taken, nothing comes back
        failing,      ///< answers with an error
    };

    SimulatedService(SimulatedExchange& exchange, Dice& dice, Chronicle& chronicle);

    /// Whether the process is there, as the service manager sees it.
    [[nodiscard]] bool processRuns() const noexcept { return state_ != State::down; }

    /// The manager has started it anew.
    void restart();

    /// Something becomes of it by itself.
    void change();

    /// Things may go wrong from now on.
    void beginFaults() { faults_ = true; }

    /// From now on it is up, answers soon and keeps its jobs as they are; or it is down.
    void endFaults(bool up);

    [[nodiscard]] bool answers() const noexcept { return state_ == State::up; }

    [[nodiscard]] bool acceptsDeepJobs() const noexcept { return accepting_; }

signals:
    /// Before the controller gets it.
    void answering(std::size_t number, const std::optional<QByteArray>& body);

    /// A request will be answered after that time.
    void answerPlanned(std::chrono::milliseconds after);

    /// It goes down and comes up again.
    void restarted();

private:
    struct Reply {
        std::chrono::milliseconds after;
        std::optional<QByteArray> body;
    };

    void take(std::size_t number, const ServiceRequest& request);
    [[nodiscard]] Reply reply(const ServiceRequest& request);
    void obey(const ServiceRequest& request);
    void disobey(const ServiceRequest& request);
    [[nodiscard]] QByteArray answerTo(const ServiceRequest& request);
    [[nodiscard]] QByteArray spoilt(QJsonObject answer);
    void become(State state);
    void workOn();

    SimulatedExchange& exchange_;
    Dice& dice_;
    Chronicle& chronicle_;
    State state_ = State::up;
    bool faults_ = true;
    bool accepting_ = true;
    QString mode_;
    QJsonObject document_; // all but what depends on the two above
    QByteArray health_;    // all of it, unless something has changed
    QJsonObject diagnostics_;
    QTimer start_;
};

} // namespace vesk

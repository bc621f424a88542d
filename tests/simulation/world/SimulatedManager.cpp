#include "SimulatedManager.h"

#include <QStringList>
#include <QTimer>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

SimulatedManager::SimulatedManager(
    SimulatedTool& tool, SimulatedService& service, Dice& dice, Chronicle& chronicle)
    : tool_(tool), service_(service), dice_(dice), chronicle_(chronicle) {
    tool_.started = [this](std::size_t number, const SimulatedTool::Run& run) {
        take(number, run);
    };
}

void SimulatedManager::take(std::size_t number, const SimulatedTool::Run& run) {
    const QString verb = run.script.isEmpty() ? run.arguments.value(0) : u"start"_s;
    chronicle_.note(u"tool", u"run %1: %2"_s.arg(number).arg(verb));
    if (faults_ && dice_.oneIn(40)) {
        chronicle_.note(u"manager", u"hangs in run %1"_s.arg(number));
        return;
    }
    const bool slow = faults_ && dice_.oneIn(4);
    QTimer::singleShot(
        slow ? dice_.between(200ms, 20'000ms) : dice_.between(1ms, 200ms), Qt::PreciseTimer, this,
        [this, number, verb] { end(number, verb); });
}

void SimulatedManager::end(std::size_t number, const QString& verb) {
    if (faults_ && dice_.oneIn(8)) {
        knowsService_ = !knowsService_;
    }
    const ToolResult result = resultOf(verb);
    const bool good = std::holds_alternative<QString>(result);
    chronicle_.note(
        u"manager", u"ends run %1, %2"_s.arg(number).arg(good ? u"good"_s : u"failed"_s));
    emit ending(number, result);
    tool_.end(number, result);
}

ToolResult SimulatedManager::resultOf(const QString& verb) {
    static const QStringList words{
        QString(), u"Bootstrap failed: 5: Input/output error"_s,
        u"Boot-out failed: 36: Operation now in progress\nTry again & see <later>.\n"_s,
        u"the output of the tool is too large"_s, u"x"_s.repeated(12'000)};
    if (verb == u"print") {
        if (!knowsService_) {
            return serviceError(113, u"Could not find service"_s);
        }
        const bool runs = service_.processRuns();
        return u"gui/501/it = {\n\tstate = "_s
               + (runs ? u"running\n\tpid = 17\n}\n"_s : u"not running\n}\n"_s);
    }
    if (faults_ && dice_.oneIn(3)) {
        if (!dice_.oneIn(3)) {
            service_.restart(); // in spite of its own words
        }
        return serviceError(5, dice_.oneOf(words));
    }
    knowsService_ = true;
    service_.restart();
    return QString();
}

} // namespace vesk

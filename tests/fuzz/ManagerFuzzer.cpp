#include "agent/systemd/UserManager.h"
#include "model/ListenerRecoveryPolicy.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView stateLine = u"state = running";

/// What it says depends on its lines one by one.
void checkDescription(const QString& text) {
    const bool running = ListenerRecoveryPolicy::serviceReportsRunning(text);
    const QStringList lines = text.split(u'\n');
    const bool anyLine = std::any_of(lines.begin(), lines.end(), [](const QString& line) {
        return ListenerRecoveryPolicy::serviceReportsRunning(line);
    });
    require(running == anyLine, "no line changes what another says");
    for (const QString& line : lines) {
        const bool says = ListenerRecoveryPolicy::serviceReportsRunning(line);
        const qsizetype place = line.indexOf(stateLine);
        const bool alone =
            place >= 0 && QStringView(line).first(place).trimmed().isEmpty()
            && QStringView(line).sliced(place + stateLine.size()).trimmed().isEmpty();
        require(says == alone, "a line says it with these words only");
    }
    require(
        ListenerRecoveryPolicy::serviceReportsRunning(text + u"\n\tstate = running\n"_s),
        "the line is found wherever it is");
}

/// The value of the last line with that key, which is empty on a line that is nothing else.
QString valueOf(const QString& text, const QString& key) {
    QString value;
    const QStringList lines = text.split(u'\n');
    for (const QString& line : lines) {
        if (line == key || line.startsWith(key + u'=')) {
            value = line.sliced(std::min(key.size() + 1, line.size()));
        }
    }
    return value;
}

void checkState(const QString& text) {
    const auto state = UserManager::readState(text);
    require(state.loaded == (valueOf(text, u"LoadState"_s) == u"loaded"), "loaded is as told");
    require(state.file == valueOf(text, u"FragmentPath"_s), "the unit's file is as told");
    require(state.source == valueOf(text, u"SourcePath"_s), "the agent's file is as told");
    require(
        state.mainProcess == valueOf(text, u"MainPID"_s).toLongLong(), "the process is as told");
    require(
        state.executionFailure == 0
            || (state.executionFailure >= 200 && state.executionFailure <= 245
                && state.executionFailure == valueOf(text, u"ExecMainStatus"_s).toInt()),
        "a failure is one of the manager's own");
}

} // namespace

} // namespace vesk

/// What the service manager or its tool wrote.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vesk;
    const QString text = QString::fromUtf8(inputBytes(data, size));
    checkDescription(text);
    checkState(text);
    return 0;
}

#include "app/SelfTest.h"

#include "agent/ErrorLine.h"
#include "app/OutputText.h"
#include "model/ListenerRecoveryPolicy.h"
#include "model/RackProgress.h"
#include "model/RefreshPolicy.h"
#include "model/SlotPresentation.h"

#include <cstdlib>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

void check(bool condition) {
    if (!condition) {
        writeErrorLine(u"Presentation test failed"_s);
        std::exit(EXIT_FAILURE);
    }
}

void checkPresentation() {
    constexpr ServiceState ready{.online = true, .accepting = true};
    const SlotPresentation video(
        {.state = u"busy"_s,
         .phase = u"processing"_s,
         .stage = u"describe"_s,
         .mediaKind = u"video"_s,
         .positionMs = 1500},
        ready);
    check(video.title.contains(u"Video") && video.detail.contains(u"1.5"));

    const SlotPresentation idle({.state = u"idle"_s, .stage = u"audio"_s}, ready);
    check(idle.state == u"Ready" && !idle.title.contains(u"audio"));

    const SlotPresentation finished(
        {.state = u"idle"_s,
         .lastStage = u"describe"_s,
         .lastMediaKind = u"video"_s,
         .lastFinishedSecondsAgo = 3},
        ready);
    check(finished.state == u"Ready" && finished.detail.contains(u"video visual"));

    const SlotPresentation cooling(
        {.state = u"waiting"_s, .phase = u"cooling"_s, .stage = u"describe"_s}, ready);
    check(cooling.state == u"Cooling");
    check(SlotPresentation({}, {.online = false, .accepting = true}).state == u"Offline");
    check(SlotPresentation({}, {.online = true, .accepting = false}).state == u"Paused");
}

void checkProgress() {
    constexpr Cooldown none{.left = 0, .whole = 45};
    const RackProgress frames({.progressCurrent = 2, .progressTotal = 4}, none);
    check(frames.exact && frames.value == 0.5 && frames.label == u"frame 2/4");

    const RackProgress estimate(
        {.state = u"busy"_s, .phase = u"processing"_s, .elapsedMs = 90000}, none);
    check(!estimate.exact && estimate.value > 0.34 && estimate.value < 0.92);

    const RackProgress cooling(
        {.state = u"waiting"_s, .phase = u"cooling"_s}, {.left = 15, .whole = 45});
    check(cooling.exact && cooling.label.contains(u"15s"));
}

void checkRefreshPolicy() {
    constexpr Attention hidden;
    constexpr Attention visible{.visible = true};
    constexpr Attention setup{.setup = true};
    check(RefreshPolicy::health(visible, true) == Seconds(1.5));
    check(RefreshPolicy::health(visible, false) == Seconds(5.0));
    check(RefreshPolicy::health(hidden, true) == Seconds(10.0));
    check(RefreshPolicy::health(hidden, false) == Seconds(30.0));
    check(RefreshPolicy::health(setup, false) == Seconds(1.5));
    check(RefreshPolicy::diagnostics(hidden) == Seconds(300.0));
    check(RefreshPolicy::diagnostics(visible) == Seconds(60.0));
    check(RefreshPolicy::diagnostics(setup) == Seconds(30.0));
    check(RefreshPolicy::offlineAfterMisses == 3);
}

void checkListenerRecovery() {
    using Policy = ListenerRecoveryPolicy;
    check(Policy::serviceReportsRunning(u"service = {\n\tstate = running\n}"));
    check(!Policy::serviceReportsRunning(u"service = {\n\tstate = waiting\n}"));

    const TimePoint now(1000s);
    check(!Policy::shouldRecover({.serviceRunning = true, .misses = 2, .now = now}));
    check(!Policy::shouldRecover({.serviceRunning = false, .misses = 3, .now = now}));
    check(!Policy::shouldRecover(
        {.serviceRunning = true, .misses = 3, .starting = true, .now = now}));
    check(!Policy::shouldRecover(
        {.serviceRunning = true, .misses = 3, .recoveryInFlight = true, .now = now}));
    check(!Policy::shouldRecover(
        {.serviceRunning = true, .misses = 3, .now = now, .lastAttempt = now - 89s}));
    check(Policy::shouldRecover(
        {.serviceRunning = true, .misses = 3, .now = now, .lastAttempt = now - 90s}));
}

} // namespace

int runSelfTest() {
    checkPresentation();
    checkProgress();
    checkRefreshPolicy();
    checkListenerRecovery();
    return writeOutput(u"8 worker/rack presentation, 9 refresh policy and 8 listener recovery "
                       "checks passed\n"_s);
}

} // namespace vesk

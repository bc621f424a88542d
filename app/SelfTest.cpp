#include "app/SelfTest.h"

#include "model/ListenerRecoveryPolicy.h"
#include "model/RackProgress.h"
#include "model/RefreshPolicy.h"
#include "model/SlotPresentation.h"

#include <cstdio>
#include <cstdlib>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

void check(bool condition) {
    if (!condition) {
        std::fputs("Presentation test failed\n", stderr);
        std::exit(EXIT_FAILURE);
    }
}

void checkPresentation() {
    const SlotPresentation video(
        {{u"state"_s, u"busy"_s},
         {u"stage"_s, u"describe"_s},
         {u"media_kind"_s, u"video"_s},
         {u"phase"_s, u"processing"_s},
         {u"position_ms"_s, 1500}},
        true, true);
    check(video.title.contains(u"Video") && video.detail.contains(u"1.5"));

    const SlotPresentation idle(
        {{u"state"_s, u"idle"_s},
         {u"stage"_s, u"audio"_s},
         {u"preview"_s, QJsonObject{{u"kind"_s, u"audio_frame"_s}}}},
        true, true);
    check(idle.state == u"Ready" && !idle.title.contains(u"audio"));

    const SlotPresentation finished(
        {{u"state"_s, u"idle"_s},
         {u"last_stage"_s, u"describe"_s},
         {u"last_media_kind"_s, u"video"_s},
         {u"last_finished_seconds_ago"_s, 3}},
        true, true);
    check(finished.state == u"Ready" && finished.detail.contains(u"video visual"));

    const SlotPresentation cooling(
        {{u"state"_s, u"waiting"_s}, {u"stage"_s, u"describe"_s}, {u"phase"_s, u"cooling"_s}}, true,
        true);
    check(cooling.state == u"Cooling");
    check(SlotPresentation({}, false, true).state == u"Offline");
    check(SlotPresentation({}, true, false).state == u"Paused");
}

void checkProgress() {
    const RackProgress frames({{u"progress_current"_s, 2}, {u"progress_total"_s, 4}}, 0, 45);
    check(frames.exact && frames.value == 0.5 && frames.label == u"frame 2/4");

    const RackProgress estimate(
        {{u"state"_s, u"busy"_s}, {u"phase"_s, u"processing"_s}, {u"elapsed_ms"_s, 90000}}, 0, 45);
    check(!estimate.exact && estimate.value > 0.34 && estimate.value < 0.92);

    const RackProgress cooling({{u"state"_s, u"waiting"_s}, {u"phase"_s, u"cooling"_s}}, 15, 45);
    check(cooling.exact && cooling.label.contains(u"15s"));
}

void checkRefreshPolicy() {
    check(RefreshPolicy::health(true, true, false) == Seconds(1.5));
    check(RefreshPolicy::health(true, false, false) == Seconds(5.0));
    check(RefreshPolicy::health(false, true, false) == Seconds(10.0));
    check(RefreshPolicy::health(false, false, false) == Seconds(30.0));
    check(RefreshPolicy::health(false, false, true) == Seconds(1.5));
    check(RefreshPolicy::diagnostics(false, false) == Seconds(300.0));
    check(RefreshPolicy::diagnostics(true, false) == Seconds(60.0));
    check(RefreshPolicy::diagnostics(false, true) == Seconds(30.0));
    check(RefreshPolicy::offlineAfterMisses == 3);
}

void checkListenerRecovery() {
    using Policy = ListenerRecoveryPolicy;
    const TimePoint now(1000s);
    check(Policy::serviceReportsRunning(u"service = {\n\tstate = running\n}"));
    check(!Policy::serviceReportsRunning(u"service = {\n\tstate = waiting\n}"));
    check(!Policy::shouldRecover(true, 2, false, false, now, {}));
    check(!Policy::shouldRecover(false, 3, false, false, now, {}));
    check(!Policy::shouldRecover(true, 3, true, false, now, {}));
    check(!Policy::shouldRecover(true, 3, false, true, now, {}));
    check(!Policy::shouldRecover(true, 3, false, false, now, now - 89s));
    check(Policy::shouldRecover(true, 3, false, false, now, now - 90s));
}

} // namespace

int runSelfTest() {
    checkPresentation();
    checkProgress();
    checkRefreshPolicy();
    checkListenerRecovery();
    std::puts("8 worker/rack presentation, 9 refresh policy and 8 listener recovery checks passed");
    return EXIT_SUCCESS;
}

} // namespace vesk

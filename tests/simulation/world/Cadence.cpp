#include "Cadence.h"

#include "tests/simulation/VirtualTime.h"
#include "tests/simulation/world/Screen.h"

#include <QGuiApplication>

#include <algorithm>

namespace vesk {

using namespace std::chrono_literals;

namespace {

TimePoint now() {
    return VirtualTime::instance().now();
}

} // namespace

void Cadence::launched() {
    reload();
    armed_ = armedNow();
    serviceRestarts();
}

void Cadence::ended() {
    screen_ = nullptr;
    setupOpen_ = menuOpen_ = fetching_ = seen_ = seenAtGlance_ = false;
    nextMoment();
}

Seconds Cadence::interval() const {
    const bool active = known_.online && busyBays(known_.document) > 0;
    if (setupOpen_ || (visible() && active)) {
        return 1.5s;
    }
    if (visible()) {
        return 5s;
    }
    return active ? 10s : 30s;
}

Seconds Cadence::checkInterval() const {
    if (setupOpen_) {
        return 30s;
    }
    return visible() ? 60s : 300s;
}

bool Cadence::visible() const {
    return menuOpen_
           || (screen_ != nullptr && screen_->windowSeen()
               && QGuiApplication::applicationState() != Qt::ApplicationHidden);
}

Cadence::Armed Cadence::armedNow() const {
    const Seconds wait = interval();
    const Seconds tolerance = std::min(Seconds(1s), wait / 10);
    const auto ceiled = [](Seconds span) {
        return std::chrono::ceil<std::chrono::milliseconds>(span);
    };
    return {now() + ceiled(wait), now() + ceiled(wait + tolerance) + 1ms};
}

void Cadence::schedule() {
    armed_ = armedNow();
    if (calm_ && !caughtUp_) {
        catchUpBy_ = std::max(catchUpBy_, armed_.latest + patience);
    }
}

void Cadence::reload() {
    reloaded_ = true;
    if (fetching_ || known_.changing) {
        schedule();
    } else {
        mustFetch_ = true;
    }
}

void Cadence::menuOpened() {
    menuOpen_ = true;
    reload();
}

void Cadence::menuClosed() {
    menuOpen_ = false;
    schedule();
}

void Cadence::glance() {
    const bool seen = screen_ != nullptr && screen_->windowSeen();
    flips_ += seen != seenAtGlance_ ? 1 : 0;
    seenAtGlance_ = seen;
}

Moment::Fetch Cadence::fetchBegins() {
    const Moment::Fetch fetch{
        .otherUnderWay = fetching_,
        .changeUnderWay = known_.changing,
        .early = std::max(Seconds(armed_.earliest - now()), Seconds(0))};
    fetching_ = true;
    fetchBegan_ = now();
    return fetch;
}

void Cadence::fetchEnds() {
    fetching_ = false;
    answered_ = true;
}

void Cadence::fetchIsShown() {
    caughtUp_ = caughtUp_ || fetchBegan_ > truthSince_;
}

void Cadence::faultsEnd() {
    calm_ = true;
    serviceRestarts();
}

void Cadence::serviceRestarts() {
    if (calm_) {
        caughtUp_ = false;
        truthSince_ = now();
        // What is under way may still fail, and only the next fetch sees the service.
        catchUpBy_ =
            std::max(armed_.latest, now() + patience + (armedNow().latest - now())) + patience;
    }
}

void Cadence::noticeVisibility() {
    glance();
    if (seenAtGlance_ != seen_) {
        seen_ = seenAtGlance_;
        if (visible() && answered_) {
            // It may have been seen while the fetch was still under way.
            reloaded_ = true;
            schedule();
        } else if (visible()) {
            reload();
        } else {
            schedule();
        }
    } else if (flips_ > 1) {
        // Nobody can tell from outside whether it was noticed.
        reloaded_ = true;
        const Armed anew = armedNow();
        armed_ = {std::min(armed_.earliest, anew.earliest), std::max(armed_.latest, anew.latest)};
    }
}

void Cadence::judge(Moment& moment) {
    noticeVisibility();
    if (reloaded_ || flips_ > 1) {
        for (Moment::Fetch& fetch : moment.fetches) {
            fetch.early = Seconds(0);
        }
    }
    moment.fetchDue = mustFetch_ && moment.fetches.isEmpty() && !known_.changing;
    if (!fetching_ && !known_.changing) {
        moment.late = std::max(Seconds(now() - armed_.latest), Seconds(0));
    }
    moment.owesTheTruth = calm_ && (caughtUp_ || now() > catchUpBy_);
}

void Cadence::nextMoment() {
    mustFetch_ = reloaded_ = answered_ = false;
    flips_ = 0;
}

} // namespace vesk

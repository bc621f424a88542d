#pragma once

#include "tests/simulation/world/Knowledge.h"
#include "tests/simulation/world/Moment.h"

namespace vesk {

class Screen;

/// The part of the witness that knows when health fetches are to begin, and from when on the screen
/// has to tell how the service really stands.
class Cadence {
public:
    /// How long an exchange may take.
    static constexpr std::chrono::seconds patience{4};

    /// The knowledge outlives this, and is kept up to date by its owner.
    explicit Cadence(const Knowledge& known) : known_(known) {}

    // The life of the program.
    void launched();
    void watch(const Screen& screen) { screen_ = &screen; }
    void ended();

    /// Whatever calls for a fetch at once.
    void reload();

    /// Whatever has the next fetch wait for its interval anew.
    void schedule();

    void menuOpened();
    void menuClosed();
    void setSetupOpen(bool open) { setupOpen_ = open; }

    /// Something may have changed what can be seen of the window.
    void glance();

    [[nodiscard]] Moment::Fetch fetchBegins();
    void fetchEnds();
    [[nodiscard]] bool isFetching() const { return fetching_; }

    /// The screen shows what the last fetch brought.
    void fetchIsShown();

    /// From now on the service is up and well, with nothing in its way, until faults begin.
    void faultsEnd();
    void faultsBegin() { calm_ = false; }

    /// What a fetch under way brings may be of before.
    void serviceRestarts();

    /// After how long the back end is checked again.
    [[nodiscard]] Seconds checkInterval() const;

    /// Tells what has to be known of fetches at the end of a moment.
    void judge(Moment& moment);
    void nextMoment();

private:
    struct Armed {
        TimePoint earliest;
        TimePoint latest;
    };

    [[nodiscard]] Seconds interval() const;
    [[nodiscard]] Armed armedNow() const;
    [[nodiscard]] bool visible() const;
    void noticeVisibility();

    const Knowledge& known_;
    const Screen* screen_ = nullptr;
    bool setupOpen_ = false;
    bool menuOpen_ = false;
    bool fetching_ = false;
    TimePoint fetchBegan_;
    Armed armed_;
    bool seen_ = false;
    bool calm_ = false;
    bool caughtUp_ = false;
    TimePoint truthSince_;
    TimePoint catchUpBy_;

    // Of the moment.
    bool mustFetch_ = false;
    bool reloaded_ = false;
    bool answered_ = false; ///< a fetch came to its end
    bool seenAtGlance_ = false;
    int flips_ = 0;
};

} // namespace vesk

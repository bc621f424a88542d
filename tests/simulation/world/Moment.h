#pragma once

#include "tests/simulation/world/ScreenTexts.h"

#include "model/Timing.h"

#include <QList>

namespace vesk {

/// One moment of virtual time after all that falls into it has happened: what the invariants judge.
struct Moment {
    /// A health fetch that began.
    struct Fetch {
        bool otherUnderWay = false;
        bool changeUnderWay = false;
        Seconds early{0}; ///< before its time without a reason
    };

    /// A restart of a service without a listener that began.
    struct Restart {
        int misses = 0; ///< in a row, when the manager was asked
        bool saidRunning = false;
        bool starting = false;
        std::optional<Seconds> sinceLast;
    };

    QList<Fetch> fetches;
    bool fetchDue = false; ///< something asked for one that did not begin
    Seconds late{0};       ///< by how much the next fetch is behind its time
    QList<Restart> restarts;
    int changesUnderWay = 0;    ///< the most at a time
    QStringList unasked;        ///< requests and runs without a reason that change nothing
    QStringList unaskedChanges; ///< those that change, start or restart the service
    QStringList missing;        ///< those that should have come
    QStringList malformed;
    bool opened = false;                ///< a sheet or an alert
    bool disturbed = false;             ///< the desktop did something to the window
    bool applied = false;               ///< setup wrote the login file, or removed it
    std::optional<QString> setupPosted; ///< what setup had to post when that is not what it did
    bool quitPressed = false;
    int missesInARow = 0;
    bool online = false;
    bool mayBeStopped = false; ///< three misses, a failed start, or no answer ever
    bool changing = false;
    bool accepting = false;
    bool lastWasGood = false;
    bool owesTheTruth = false; ///< without faults for long enough to know how the service stands
    std::optional<bool> mustBeHidden; ///< the window; nothing where that cannot be known
    ScreenTexts expected;
};

} // namespace vesk

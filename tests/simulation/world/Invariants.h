#pragma once

#include "tests/simulation/world/Moment.h"

#include <QList>

#include <functional>

namespace vesk {

/// What there is to see at the end of a moment, besides what was to be expected.
struct Evidence {
    const Moment& moment;
    const ScreenTexts& shown;
    Seconds keysWrongFor{0};       ///< for how long a blocked window has had focus
    Seconds focusGivenFor{0};      ///< since the desktop refused it last
    bool serviceAnswers = false;   ///< the service
    bool serviceAccepts = false;   ///< deep jobs
    bool setupVisitedKept = false; ///< as the preferences say
    bool setupCompleteKept = false;
    bool setupVisited = false; ///< as it was
    bool setupComplete = false;
    bool loginFileThere = false; ///< looked at when setup applied
    bool startsAtLogin = false;
};

/// Something that always holds: a sentence, and what is wrong where it does not; empty where it
/// does.
struct Invariant {
    const char* sentence;
    QString (*broken)(const Evidence& evidence);
};

/// All of them, the plainer ones first.
[[nodiscard]] const QList<Invariant>& invariants();

} // namespace vesk

#pragma once

#include "ui/texts/Face.h"

#include <QColor>
#include <QPalette>

namespace vesk {

/// The colours of every screen, in sRGB.
struct Theme {
    Theme() = delete;

    static const QColor background; ///< windows
    static const QColor panel;      ///< cards
    static const QColor line;       ///< borders of cards
    static const QColor accent;     ///< brand, highlights, primary buttons
    static const QColor muted;      ///< secondary texts and paragraphs
    static const QColor text;       ///< everything else that is read
    static const QColor attention;  ///< a delay that may pass
    static const QColor stopped;    ///< the service is away

    [[nodiscard]] static const QColor& color(Tone tone);

    /// Dark in every role, whatever the desktop's scheme.
    [[nodiscard]] static QPalette palette();
};

} // namespace vesk

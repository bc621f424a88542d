#pragma once

#include <QString>

namespace vesk {

/// What a push button or a menu item shows.
struct ButtonFace {
    QString title;
    bool enabled = true;

    bool operator==(const ButtonFace&) const = default;
};

/// What a check box shows.
struct ToggleFace {
    Qt::CheckState state = Qt::PartiallyChecked;
    bool enabled = false;

    bool operator==(const ToggleFace&) const = default;
};

/// What a text is about, which settles its colour.
enum class Tone { muted, live, attention, stopped };

/// The line that tells how the connection to the service stands.
struct ConnectionFace {
    QString text;
    Tone tone = Tone::muted;

    bool operator==(const ConnectionFace&) const = default;
};

} // namespace vesk

#include "ui/kit/Theme.h"

#include <initializer_list>

namespace vesk {

const QColor Theme::background = QColor::fromRgbF(0.055F, 0.075F, 0.09F);
const QColor Theme::panel = QColor::fromRgbF(0.085F, 0.11F, 0.13F);
const QColor Theme::line = QColor::fromRgbF(0.17F, 0.22F, 0.24F);
const QColor Theme::accent = QColor::fromRgbF(0.43F, 0.92F, 0.66F);
const QColor Theme::muted = QColor::fromRgbF(0.62F, 0.69F, 0.72F);
const QColor Theme::text = QColor::fromRgbF(1.0F, 1.0F, 1.0F);
const QColor Theme::attention = QColor::fromRgbF(1.0F, 0.84F, 0.04F);
const QColor Theme::stopped = QColor::fromRgbF(1.0F, 0.62F, 0.04F);

const QColor& Theme::color(Tone tone) {
    switch (tone) {
    case Tone::live:
        return accent;
    case Tone::attention:
        return attention;
    case Tone::stopped:
        return stopped;
    case Tone::muted:
        break;
    }
    return muted;
}

QPalette Theme::palette() {
    QPalette palette(
        text, panel, line.lighter(150), background, line, text, text, panel, background);
    palette.setColor(QPalette::AlternateBase, background);
    palette.setColor(QPalette::ToolTipBase, panel);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, muted);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, background);
    palette.setColor(QPalette::Link, accent);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, muted.darker(118));
    }
    return palette;
}

} // namespace vesk

#include "tools/gallery/ContrastCheck.h"

#include "tools/gallery/Contrast.h"
#include "tools/gallery/LayoutCheck.h"
#include "ui/kit/GlyphView.h"
#include "ui/kit/Lamp.h"
#include "ui/kit/Meter.h"
#include "ui/kit/TextView.h"

#include <QCheckBox>
#include <QHash>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QStyleOptionButton>

#include <algorithm>
#include <optional>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr double leastOfTexts = 4.5;
constexpr double leastOfShapes = 3;

// Of W3C's guidelines: 18 points, or 14 when bold.
constexpr int largePixels = 24;
constexpr int largeBoldPixels = 19;

double leastOf(const QFont& font) {
    const bool large =
        font.pixelSize() >= (font.weight() >= QFont::Bold ? largeBoldPixels : largePixels);
    return large ? leastOfShapes : leastOfTexts;
}

/// What is drawn in a part of a window, and how much it has to stand out there.
struct Drawing {
    QRect place;
    double least = 0;
};

/// Within the edge that a button draws.
QRect insideOf(const QAbstractButton& button) {
    constexpr int edge = 4;
    return button.rect().adjusted(edge, edge, -edge, -edge);
}

QRect wordsOf(const QCheckBox& box) {
    QStyleOptionButton option;
    option.initFrom(&box);
    option.text = box.text();
    QRect words = box.style()->subElementRect(QStyle::SE_CheckBoxContents, &option, &box);
    constexpr int ring = 5;
    return words.adjusted(ring, 0, 0, 0) & box.rect();
}

std::optional<Drawing> drawingOf(const QWidget& widget) {
    if (qobject_cast<const Lamp*>(&widget) != nullptr
        || qobject_cast<const GlyphView*>(&widget) != nullptr) {
        return Drawing{.place = widget.rect(), .least = leastOfShapes};
    }
    if (const auto* meter = qobject_cast<const Meter*>(&widget)) {
        // A full or an empty one shows its bar or its track alone.
        const bool both = meter->value() > 0.05 && meter->value() < 0.95;
        const QRect middle(0, meter->height() / 2, meter->width(), 1);
        return both ? std::optional(Drawing{.place = middle, .least = leastOfShapes})
                    : std::nullopt;
    }
    const auto* view = qobject_cast<const TextView*>(&widget);
    const auto* label = qobject_cast<const QLabel*>(&widget);
    if ((view != nullptr && !view->text().isEmpty())
        || (label != nullptr && !label->text().isEmpty())) {
        return Drawing{.place = widget.rect(), .least = leastOf(widget.font())};
    }
    if (const auto* box = qobject_cast<const QCheckBox*>(&widget)) {
        return Drawing{.place = wordsOf(*box), .least = leastOf(box->font())};
    }
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
        return Drawing{.place = insideOf(*button), .least = leastOf(button->font())};
    }
    return std::nullopt;
}

/// Between the colour that most of the picture has and the one that stands out most from it.
double contrastIn(const QImage& picture) {
    QHash<QRgb, int> count;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            ++count[picture.pixel(x, y)];
        }
    }
    const auto most = std::max_element(count.cbegin(), count.cend());
    double best = 1;
    for (auto color = count.keyBegin(); color != count.keyEnd(); ++color) {
        best = std::max(best, contrast(QColor(*color), QColor(most.key())));
    }
    return best;
}

QRect scaled(const QRect& place, qreal scale) {
    return QRectF(place.topLeft() * scale, QSizeF(place.size()) * scale).toAlignedRect();
}

} // namespace

QStringList contrastFaults(const QWidget& window, const QImage& picture) {
    QStringList faults;
    for (const auto* widget : window.findChildren<QWidget*>()) {
        const auto drawing = drawingOf(*widget);
        if (!drawing || !widget->isVisibleTo(&window) || widget->window() != &window) {
            continue;
        }
        const QRect place(widget->mapTo(&window, drawing->place.topLeft()), drawing->place.size());
        const double found = contrastIn(picture.copy(scaled(place, picture.devicePixelRatio())));
        if (found < drawing->least) {
            faults.append(described(*widget) + u" has a contrast of %1:1"_s.arg(found, 0, 'f', 2));
        }
    }
    return faults;
}

} // namespace vesk

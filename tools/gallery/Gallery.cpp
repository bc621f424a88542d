#include "tools/gallery/Gallery.h"

#include "tools/gallery/ContrastCheck.h"
#include "tools/gallery/LayoutCheck.h"

#include <QGuiApplication>
#include <QImage>
#include <QLayout>
#include <QPainter>
#include <QWidget>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr auto letteredProperty = "veskLettered";

QList<qreal> scales() {
    const qreal own = qGuiApp->devicePixelRatio();
    return own == 1 ? QList<qreal>{1, 2} : QList<qreal>{own};
}

QImage canvas(QSize size, qreal scale) {
    QImage image((QSizeF(size) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    return image;
}

QString fileName(const QString& name, qreal scale) {
    return scale == 1 ? name + u".png"_s : name + u"@%1x.png"_s.arg(scale);
}

} // namespace

bool isBlank(const QImage& image) {
    if (image.isNull()) {
        return true;
    }
    QImage oneColour(image.size(), image.format());
    oneColour.setDevicePixelRatio(image.devicePixelRatio());
    oneColour.fill(image.pixelColor(0, 0));
    return image == oneColour;
}

void Gallery::letter(QWidget& window) const {
    for (auto* widget : window.findChildren<QWidget*>()) {
        if (!widget->testAttribute(Qt::WA_SetFont) || widget->property(letteredProperty).toBool()) {
            continue;
        }
        QFont font = widget->font();
        font.setPixelSize(font.pixelSize() * lettering_.percent / 100);
        if (!lettering_.family.isEmpty()) {
            font.setFamily(lettering_.family);
        }
        widget->setFont(font);
        widget->setProperty(letteredProperty, true);
    }
    // As large as the window would have made itself for such letters.
    const int height = window.layout() != nullptr && window.layout()->hasHeightForWidth()
                           ? window.layout()->totalMinimumHeightForWidth(window.width())
                           : 0;
    window.setMinimumSize(
        window.minimumSize().expandedTo(window.minimumSizeHint()).expandedTo({0, height}));
}

void Gallery::add(const QString& name, QWidget& window) {
    letter(window);
    // A layout tells the one around it of its new size in an event.
    constexpr int deepestNesting = 10;
    for (int level = 0; level < deepestNesting; ++level) {
        QCoreApplication::processEvents();
    }
    QImage image;
    for (const qreal scale : scales()) {
        image = canvas(window.size(), scale);
        window.render(&image);
        save(fileName(name, scale), image);
    }
    for (const QString& fault : layoutFaults(window)) {
        faults_.append(name + u": "_s + fault);
    }
    for (const QString& fault : contrastFaults(window, image)) {
        faults_.append(name + u": "_s + fault);
    }
}

void Gallery::add(const QString& name, QSize size, const std::function<void(QPainter&)>& draw) {
    for (const qreal scale : scales()) {
        QImage image = canvas(size, scale);
        QPainter painter(&image);
        draw(painter);
        painter.end();
        save(fileName(name, scale), image);
    }
}

void Gallery::save(const QString& name, const QImage& image) {
    ++pictures_;
    if (isBlank(image)) {
        faults_.append(name + u": is blank"_s);
    }
    if (!image.save(folder_.filePath(name))) {
        faults_.append(name + u": cannot be written"_s);
    }
}

} // namespace vesk

#include "tools/gallery/Gallery.h"

#include "tools/gallery/LayoutCheck.h"

#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QWidget>

#include <array>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array scales{1, 2};

QImage canvas(QSize size, int scale) {
    QImage image(size * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    return image;
}

QString fileName(const QString& name, int scale) {
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

void Gallery::add(const QString& name, QWidget& window) {
    // A layout tells the one around it of its new size in an event.
    constexpr int deepestNesting = 10;
    for (int level = 0; level < deepestNesting; ++level) {
        QCoreApplication::processEvents();
    }
    for (const int scale : scales) {
        QImage image = canvas(window.size(), scale);
        window.render(&image);
        save(fileName(name, scale), image);
    }
    for (const QString& fault : layoutFaults(window)) {
        faults_.append(name + u": "_s + fault);
    }
}

void Gallery::add(const QString& name, QSize size, const std::function<void(QPainter&)>& draw) {
    for (const int scale : scales) {
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

#include "tools/icons/AppleIcon.h"
#include "ui/kit/AppIcon.h"

#include <QBuffer>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSaveFile>
#include <QSvgGenerator>

#include <cstdio>

namespace {

using namespace Qt::StringLiterals;

constexpr int vectorEdge = 256;

QByteArray png(int edge) {
    QImage image(edge, edge, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    vesk::drawApplicationIcon(painter, edge);
    painter.end();
    QBuffer file;
    image.save(&file, "PNG");
    return file.data();
}

QByteArray svg() {
    QBuffer file;
    QSvgGenerator generator;
    generator.setOutputDevice(&file);
    generator.setResolution(96); // a unit is a pixel
    generator.setSize({vectorEdge, vectorEdge});
    generator.setViewBox(QRect(0, 0, vectorEdge, vectorEdge));
    generator.setTitle(u"VeskWorkerControl"_s);
    generator.setDescription(u"The mark on a dark rounded tile"_s);
    QPainter painter(&generator);
    vesk::drawApplicationIcon(painter, vectorEdge);
    painter.end();
    return file.data();
}

QByteArray icns() {
    QList<QByteArray> files;
    for (const auto& picture : vesk::applePictures()) {
        files += png(picture.edge);
    }
    return vesk::appleIcon(files);
}

bool write(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    if (QDir().mkpath(QFileInfo(path).path()) && file.open(QSaveFile::WriteOnly)
        && file.write(bytes) == bytes.size() && file.commit()) {
        return true;
    }
    std::fprintf(stderr, "%s: cannot be written\n", qPrintable(path));
    return false;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs(
            "usage: vesk-icons FOLDER\n"
            "Draws the application's icon into FOLDER: hicolor/ as desktops have it, and\n"
            "VeskWorkerControl.icns as macOS does.\n",
            stderr);
        return 2;
    }
    const QGuiApplication application(argc, argv);
    const QString folder = QString::fromLocal8Bit(argv[1]);
    const QString place = folder + u"/hicolor/%1/apps/com.halvex.VeskWorkerControl."_s;
    bool written = write(place.arg(u"scalable"_s) + u"svg"_s, svg())
                   && write(folder + u"/VeskWorkerControl.icns"_s, icns());
    for (const int edge : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        written = written && write(place.arg(u"%1x%1"_s.arg(edge)) + u"png"_s, png(edge));
    }
    return written ? 0 : 1;
}

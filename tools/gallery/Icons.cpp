#include "tools/gallery/Gallery.h"
#include "tools/gallery/Screens.h"
#include "ui/kit/AppIcon.h"
#include "ui/tray/TrayIcon.h"

#include <QPainter>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// The icon in each of the sizes, side by side.
void addIcon(
    Gallery& gallery, const QString& name, const QIcon& icon, const QList<int>& edges,
    const QColor& ground) {
    constexpr int margin = 12;
    int width = margin;
    for (const int edge : edges) {
        width += edge + margin;
    }
    gallery.add(name, {width, edges.last() + 2 * margin}, [&](QPainter& painter) {
        painter.fillRect(painter.viewport(), ground);
        int x = margin;
        for (const int edge : edges) {
            icon.paint(&painter, x, margin + (edges.last() - edge) / 2, edge, edge);
            x += edge + margin;
        }
    });
}

} // namespace

void addIcons(Gallery& gallery) {
    const QColor light(0xf0, 0xf0, 0xf0);
    const QColor dark(0x2e, 0x2e, 0x2e);
    const QList<int> traySizes{16, 22, 24, 32, 48};
    for (const char* count : {"", "1", "3", "12"}) {
        const QString text = QString::fromLatin1(count);
        const QString name = text.isEmpty() ? u"tray-"_s : u"tray-%1-"_s.arg(text);
        addIcon(gallery, name + u"light"_s, trayIcon(text, false), traySizes, light);
        addIcon(gallery, name + u"dark"_s, trayIcon(text, false), traySizes, dark);
        addIcon(gallery, name + u"tinted"_s, trayIcon(text, true), traySizes, light);
    }
    const QList<int> iconSizes{16, 32, 48, 64, 128, 256};
    addIcon(gallery, u"icon-light"_s, applicationIcon(), iconSizes, light);
    addIcon(gallery, u"icon-dark"_s, applicationIcon(), iconSizes, dark);
}

} // namespace vesk

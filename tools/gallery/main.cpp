#include "tools/gallery/Gallery.h"
#include "tools/gallery/Screens.h"
#include "ui/kit/Theme.h"
#include "ui/kit/ThemeStyle.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char** argv) {
    using namespace vesk;
    if (argc != 2) {
        std::fputs(
            "usage: vesk-gallery FOLDER\n"
            "Draws every screen of the dashboard into FOLDER, in single and in double size, and\n"
            "fails where a text is cut or widgets overlap.\n",
            stderr);
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(new ThemeStyle);
    QApplication::setPalette(Theme::palette());

    const QDir folder(QString::fromLocal8Bit(argv[1]));
    if (!folder.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "%s: cannot be made\n", argv[1]);
        return 1;
    }
    Gallery gallery(folder);
    addPanels(gallery);
    addSheets(gallery);
    addCards(gallery);
    addIcons(gallery);
    for (const QString& fault : gallery.faults()) {
        std::fprintf(stderr, "%s\n", qPrintable(fault));
    }
    std::printf("%d pictures, %d faults\n", gallery.pictures(), int(gallery.faults().size()));
    return gallery.faults().isEmpty() ? 0 : 1;
}

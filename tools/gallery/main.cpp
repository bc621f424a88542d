#include "tools/gallery/Gallery.h"
#include "tools/gallery/Screens.h"
#include "ui/kit/ThemeStyle.h"

#include <QApplication>
#include <QFontDatabase>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    using namespace vesk;
    if (argc < 2 || argc > 4) {
        std::fputs(
            "usage: vesk-gallery FOLDER [FONT [PERCENT]]\n"
            "Draws every screen of the dashboard into FOLDER, in single and in double size or in\n"
            "that of QT_SCALE_FACTOR, with the system's font or with FONT, letters PERCENT as "
            "large\n"
            "as usual, and fails where a text is cut, widgets overlap or something hardly stands\n"
            "out from its ground.\n",
            stderr);
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    applyTheme();

    const QDir folder(QString::fromLocal8Bit(argv[1]));
    if (!folder.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "%s: cannot be made\n", argv[1]);
        return 1;
    }
    const Lettering lettering{
        .family = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString(),
        .percent = argc > 3 ? std::atoi(argv[3]) : 100};
    if (!lettering.family.isEmpty() && !QFontDatabase::hasFamily(lettering.family)) {
        std::fprintf(stderr, "%s: no such font\n", argv[2]);
        return 1;
    }
    Gallery gallery(folder, lettering);
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

#include "tests/simulation/VirtualTime.h"
#include "tests/simulation/world/Simulation.h"

#include "ui/kit/ThemeStyle.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QHashSeed>
#include <QLoggingCategory>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <utility>

namespace {

using namespace vesk;
using namespace Qt::StringLiterals;

/// The same surroundings everywhere: no bus, no screen, no taste of anybody's.
void forgetSurroundings() {
    for (const char* variable :
         {"DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "WAYLAND_DISPLAY", "QT_STYLE_OVERRIDE",
          "QT_QPA_PLATFORMTHEME", "QT_IM_MODULE", "QT_SCALE_FACTOR", "XDG_CURRENT_DESKTOP",
          "TESSALURE_WORKER_TOKEN", "QT_ACCESSIBILITY"}) {
        qunsetenv(variable);
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    QHashSeed::setDeterministicGlobalSeed();
}

ssize_t hear(void* /*cookie*/, const char* bytes, std::size_t size) {
    static QByteArray line;
    line.append(bytes, static_cast<qsizetype>(size));
    Simulation* simulation = Simulation::running();
    if (simulation != nullptr && line.endsWith('\n')) {
        simulation->wrote(QString::fromUtf8(std::exchange(line, {})).chopped(1));
    }
    return static_cast<ssize_t>(size);
}

/// What the program writes to standard error is a part of what it does.
void listenToStandardError() {
    static FILE* const heard =
        fopencookie(nullptr, "w", {.read = {}, .write = hear, .seek = {}, .close = {}});
    std::setvbuf(heard, nullptr, _IOLBF, BUFSIZ);
    stderr = heard;
}

void crash(int signal) {
    std::signal(signal, SIG_DFL);
    if (Simulation* simulation = Simulation::running()) {
        simulation->chronicle().tellOfCrash(signal == SIGABRT ? "it gave up" : "it crashed");
    }
    std::raise(signal);
}

} // namespace

int main(int argc, char* argv[]) {
    forgetSurroundings();
    // As in the product: standard error is for its own few lines.
    QLoggingCategory::setFilterRules(u"*.warning=false"_s);
    QCoreApplication::setEventDispatcher(new VirtualTime);
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    applyTheme();
    QApplication::setOrganizationName(u"Halvex"_s);
    QApplication::setApplicationName(u"VeskWorkerControl"_s);

    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption seed(
        u"seed"_s, u"What the world is made of; a fresh one each time without."_s, u"number"_s,
        QString::number(std::random_device()()));
    const QCommandLineOption hours(u"hours"_s, u"How long it goes on."_s, u"number"_s, u"100"_s);
    const QCommandLineOption trace(u"trace"_s, u"Print each event."_s);
    parser.addOptions({seed, hours, trace});
    parser.process(application);

    std::signal(SIGSEGV, crash);
    std::signal(SIGABRT, crash);
    listenToStandardError();
    Simulation simulation(
        {.seed = parser.value(seed).toULongLong(), .hours = parser.value(hours).toDouble()},
        parser.isSet(trace));
    simulation.run();
    std::printf(
        "seed %s: %s hours, %llu events\n", qPrintable(parser.value(seed)),
        qPrintable(parser.value(hours)), simulation.events());
    return EXIT_SUCCESS;
}

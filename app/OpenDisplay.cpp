#include "app/OpenDisplay.h"

#include "agent/ErrorLine.h"

#include <cstdlib>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QtMessageHandler usualHandler = nullptr;

QString valueOf(const char* variable) {
    return qEnvironmentVariableIsSet(variable)
               ? u"%1=\"%2\""_s.arg(QLatin1StringView(variable), qEnvironmentVariable(variable))
               : QLatin1StringView(variable) + u" is not set"_s;
}

QString noDisplayLine() {
    QStringList values{valueOf("DISPLAY"), valueOf("WAYLAND_DISPLAY")};
    for (const char* variable : {"QT_QPA_PLATFORM", "QT_QPA_PLATFORM_PLUGIN_PATH"}) {
        if (qEnvironmentVariableIsSet(variable)) {
            values += valueOf(variable);
        }
    }
    return u"VeskWorkerControl: no display could be opened: "_s + values.join(u", "_s);
}

/// Qt reports that it has no usable platform plugin by a fatal message, which would abort the
/// program. It reports each plugin that failed by messages that no filter rule switches off: they
/// are left to users who set rules of their own.
void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtFatalMsg) {
        writeErrorLine(noDisplayLine());
        std::_Exit(EXIT_FAILURE);
    }
    if (type == QtDebugMsg || qEnvironmentVariableIsSet("QT_LOGGING_RULES")) {
        usualHandler(type, context, message);
    }
}

/// Qt calls exit() from wherever it notices that the display is gone.
void reportLostDisplay() {
    if (QCoreApplication::instance() != nullptr) {
        writeErrorLine(u"VeskWorkerControl: the screen is gone"_s);
    }
}

} // namespace

std::unique_ptr<QApplication> openDisplay(int& argc, char** argv) {
    // Registration fails only for lack of memory; the program then ends without the line.
    static_cast<void>(std::atexit(reportLostDisplay));
    usualHandler = qInstallMessageHandler(handleMessage);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(usualHandler);
    return application;
}

} // namespace vesk

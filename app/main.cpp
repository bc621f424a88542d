#include "agent/ErrorLine.h"
#include "agent/Launchctl.h"
#include "agent/LaunchctlTool.h"
#include "agent/ServicePort.h"
#include "app/CommandLine.h"
#include "app/Control.h"
#include "app/DesktopRequests.h"
#include "app/HomeFolder.h"
#include "app/HostName.h"
#include "app/InstanceLock.h"
#include "app/PreferencesFormat.h"
#include "app/PromptQuit.h"
#include "app/SelfTest.h"
#include "service/HttpSession.h"
#include "ui/kit/AppIcon.h"
#include "ui/kit/Theme.h"
#include "ui/kit/ThemeStyle.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QSettings>
#include <QTimer>

#include <cstdlib>

namespace {

using namespace vesk;
using namespace Qt::StringLiterals;

[[noreturn]] void yieldToRunningCopy(int argc, char** argv, const CommandLine& commandLine) {
    writeErrorLine(u"Corvala for Mac is already open."_s);
    const QCoreApplication application(argc, argv);
    askRunningCopy(commandLine.setup() ? DesktopRequests::setupAction : QStringView());
    // At once: a late message from the bus would find the toolkit half taken down and say so.
    std::_Exit(EXIT_FAILURE);
}

/// The toolkit ends the program in the middle of everything when the screen is gone; of what it has
/// to say standard error lets nothing through.
void tellWhetherScreenIsGone() {
    if (QCoreApplication::instance() != nullptr) {
        writeErrorLine(u"VeskWorkerControl: the screen is gone"_s);
    }
}

void serve(const DesktopRequests& requests, Control& control) {
    QObject::connect(&requests, &DesktopRequests::openRequested, &control, &Control::openDashboard);
    QObject::connect(
        &requests, &DesktopRequests::actionRequested, &control, [&control](const QString& action) {
            if (action == DesktopRequests::startAction) {
                control.start();
            } else if (action == DesktopRequests::settingsAction) {
                control.showSettings();
            } else if (action == DesktopRequests::setupAction) {
                control.showSetup();
            } else if (action == DesktopRequests::quitAction) {
                QCoreApplication::quit();
            }
        });
}

} // namespace

int main(int argc, char* argv[]) {
    const CommandLine commandLine(argc, argv);
    const auto home = homeFolder();
    if (!home) {
        writeErrorLine(u"VeskWorkerControl: the home folder's path is not valid UTF-8"_s);
        return EXIT_FAILURE;
    }
    const InstanceLock lock(*home);
    if (commandLine.selfTest()) {
        return runSelfTest();
    }
    // Standard error is for our own few lines. QT_LOGGING_RULES, which comes after this, lets the
    // toolkit's complaints through for whoever looks for them.
    QLoggingCategory::setFilterRules(u"*.warning=false"_s);
    // Unless QT_MESSAGE_PATTERN says otherwise.
    qSetMessagePattern(u"%{if-debug}%{time yyyy-MM-dd hh:mm:ss.zzz} %{endif}"
                       "%{if-category}%{category}: %{endif}%{message}"_s);
    // The toolkit gets the program's name only: no argument of ours is to be one of its own.
    int programOnly = 1;
    if (!lock.take()) {
        yieldToRunningCopy(programOnly, argv, commandLine);
    }

    QApplication application(programOnly, argv);
    // Where there is no room for it the end is a silent one.
    static_cast<void>(std::atexit(tellWhetherScreenIsGone));
    const PromptQuit promptQuit(application);
    QApplication::setOrganizationName(u"Halvex"_s);
    QApplication::setApplicationName(u"VeskWorkerControl"_s);
    QApplication::setDesktopFileName(u"com.halvex.VeskWorkerControl"_s);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(new ThemeStyle);
    QApplication::setPalette(Theme::palette());

    QSettings defaults(
        preferencesFormat(), QSettings::UserScope, QApplication::organizationName(),
        QApplication::applicationName());
    defaults.setFallbacksEnabled(false);

    HttpSession session;
    Launchctl launchctl(launchctlTool(QApplication::applicationDirPath()));
    Control control(
        {.port = servicePort(commandLine.arguments()),
         .home = *home,
         .hostName = hostName(),
         .clock = [] { return std::chrono::steady_clock::now(); },
         .exchange = session,
         .tool = launchctl,
         .defaults = defaults,
         .setupRequested = commandLine.setup()});
    control.applicationDidFinishLaunching();
    // After the window: desktops want each of its sizes.
    QTimer::singleShot(0, &application, [] { QApplication::setWindowIcon(applicationIcon()); });
    const auto requests = DesktopRequests::listen();
    serve(*requests, control);
    return QApplication::exec();
}

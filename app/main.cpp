#include "agent/AgentLog.h"
#include "agent/ErrorLine.h"
#include "agent/HomeFolder.h"
#include "agent/Launchctl.h"
#include "agent/LaunchctlTool.h"
#include "agent/ServicePort.h"
#include "app/CommandLine.h"
#include "app/Control.h"
#include "app/DesktopRequests.h"
#include "app/HostName.h"
#include "app/InstanceLock.h"
#include "app/OpenDisplay.h"
#include "app/OutputText.h"
#include "app/PreferencesFormat.h"
#include "app/PromptQuit.h"
#include "app/SelfTest.h"
#include "app/SessionBus.h"
#include "model/LogLine.h"
#include "service/HttpSession.h"
#include "ui/kit/AppIcon.h"
#include "ui/kit/ThemeStyle.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QSettings>
#include <QTimer>

#include <cstdlib>

namespace {

using namespace vesk;
using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(uiLog, "vesk.ui", QtInfoMsg)

using Request = CommandLine::Request;
using Occasion = DesktopRequests::Occasion;

/// The action of the desktop that does the same as `request`; empty where there is none.
QStringView actionOf(Request request) {
    switch (request) {
    case Request::Start:
        return DesktopRequests::startAction;
    case Request::Settings:
        return DesktopRequests::settingsAction;
    case Request::Setup:
        return DesktopRequests::setupAction;
    case Request::Quit:
        return DesktopRequests::quitAction;
    default:
        return {};
    }
}

/// Needs an application: Qt reads QT_LOGGING_RULES when one is constructed.
void logLockFailure(const ServiceError& failure) {
    qCDebug(agentLog).noquote() << lockLine(failure);
}

[[noreturn]] void abortWithoutFolder(int argc, char** argv, const ServiceError& failure) {
    const QCoreApplication application(argc, argv);
    logLockFailure(failure);
    std::abort();
}

/// Hands `request` to the running copy, and ends at once: a late message from the bus would find Qt
/// half taken down, which prints a warning.
[[noreturn]] void
yieldToRunningCopy(int argc, char** argv, Request request, const ServiceError& lockFailure) {
    if (request != Request::Quit) {
        writeErrorLine(u"Corvala for Mac is already open."_s);
    }
    const QCoreApplication application(argc, argv);
    logLockFailure(lockFailure);
    const bool reached = askRunningCopy(actionOf(request));
    if (request != Request::Quit) {
        std::_Exit(EXIT_FAILURE);
    }
    if (!reached) {
        writeErrorLine(u"VeskWorkerControl: the running dashboard cannot be reached"_s);
    }
    std::_Exit(reached ? EXIT_SUCCESS : EXIT_FAILURE);
}

void perform(Control& control, QStringView action, Occasion occasion) {
    if (action == DesktopRequests::startAction) {
        if (occasion == Occasion::AtLaunch) {
            control.startIfStopped();
        } else {
            control.startWhenKnown();
        }
    } else if (action == DesktopRequests::settingsAction) {
        control.showSettings();
    } else if (action == DesktopRequests::setupAction) {
        control.showSetup();
    } else if (action == DesktopRequests::quitAction) {
        QCoreApplication::quit();
    }
}

void serve(const DesktopRequests& requests, Control& control) {
    QObject::connect(&requests, &DesktopRequests::openRequested, &control, &Control::openDashboard);
    QObject::connect(
        &requests, &DesktopRequests::actionRequested, &control,
        [&control](const QString& action, Occasion occasion) {
            perform(control, action, occasion);
        });
}

void prepareLogging() {
    // Standard error is for the documented lines. QT_LOGGING_RULES, which Qt reads later, can
    // switch its warnings on again.
    QLoggingCategory::setFilterRules(u"*.warning=false"_s);
    // Unless QT_MESSAGE_PATTERN says otherwise.
    qSetMessagePattern(u"%{if-debug}%{time yyyy-MM-dd hh:mm:ss.zzz} %{endif}"
                       "%{if-category}%{category}: %{endif}%{message}"_s);
}

/// Opens the display, shows the dashboard and returns the exit status after it was quit.
int runDashboard(int argc, char** argv, const CommandLine& commandLine, const QString& home) {
    const Request request = commandLine.request();
    if (commandLine.firstIsNoPort()) {
        writeErrorLine(
            u"VeskWorkerControl: the first argument is no port number; port %1 is used"_s.arg(
                defaultServicePort));
    }

    const bool silentBus = giveUpSilentSessionBus();
    const auto application = openDisplay(argc, argv);
    if (silentBus) {
        qCDebug(uiLog).noquote() << LogLine("session-bus"_L1).flag("answers"_L1, false).line();
    }
    const PromptQuit promptQuit(*application);
    QApplication::setOrganizationName(u"Halvex"_s);
    QApplication::setApplicationName(u"VeskWorkerControl"_s);
    QApplication::setDesktopFileName(u"com.halvex.VeskWorkerControl"_s);
    QApplication::setQuitOnLastWindowClosed(false);
    applyTheme();

    QSettings defaults(
        preferencesFormat(), QSettings::UserScope, QApplication::organizationName(),
        QApplication::applicationName());
    defaults.setFallbacksEnabled(false);

    HttpSession session;
    Launchctl launchctl(launchctlTool(QApplication::applicationDirPath()));
    Control control(
        {.port = servicePort(commandLine.arguments()),
         .home = home,
         .hostName = hostName(),
         .clock = [] { return std::chrono::steady_clock::now(); },
         .exchange = session,
         .tool = launchctl,
         .defaults = defaults,
         .setupRequested = request == Request::Setup});
    control.applicationDidFinishLaunching();
    if (request == Request::Start || request == Request::Settings) {
        perform(control, actionOf(request), Occasion::AtLaunch);
    }
    // After the window: desktops want each of its sizes.
    QTimer::singleShot(
        0, application.get(), [] { QApplication::setWindowIcon(applicationIcon()); });
    const auto requests = DesktopRequests::listen();
    serve(*requests, control);
    return QApplication::exec();
}

} // namespace

int main(int argc, char* argv[]) {
    const CommandLine commandLine(argc, argv);
    const Request request = commandLine.request();
    if (request == Request::Help) {
        return writeOutput(helpText());
    }
    if (request == Request::Version) {
        return writeOutput(versionText());
    }
    const auto home = exportHomeFolder();
    if (!home) {
        writeErrorLine(u"VeskWorkerControl: the home folder's path is not valid UTF-8"_s);
        return EXIT_FAILURE;
    }
    prepareLogging();
    // Qt gets the program's name only, and takes no argument of ours for one of its own.
    int programOnly = 1;
    InstanceLock lock(*home);
    if (!lock.hasFolder()) {
        abortWithoutFolder(programOnly, argv, lock.failure());
    }
    if (request == Request::SelfTest) {
        return runSelfTest();
    }
    if (!lock.take()) {
        yieldToRunningCopy(programOnly, argv, request, lock.failure());
    }
    if (request == Request::Quit) {
        return EXIT_SUCCESS;
    }
    return runDashboard(programOnly, argv, commandLine, *home);
}

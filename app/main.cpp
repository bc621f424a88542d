#include "agent/LaunchctlTool.h"
#include "agent/ServicePort.h"
#include "app/CommandLine.h"
#include "app/Control.h"
#include "app/HomeFolder.h"
#include "app/InstanceLock.h"
#include "app/Reopen.h"
#include "app/SelfTest.h"
#include "ui/kit/AppIcon.h"
#include "ui/kit/Theme.h"
#include "ui/kit/ThemeStyle.h"

#include <QApplication>
#include <QSettings>
#include <QSysInfo>

#include <cstdio>
#include <cstdlib>

int main(int argc, char* argv[]) {
    using namespace vesk;
    using namespace Qt::StringLiterals;

    const CommandLine commandLine(argc, argv);
    const QString home = homeFolder();
    const InstanceLock lock(home);
    if (commandLine.selfTest()) {
        return runSelfTest();
    }
    if (!lock.take()) {
        std::fputs("Corvala for Mac is already open.\n", stderr);
        return EXIT_FAILURE;
    }

    // The toolkit gets the program's name only: no argument of ours is to be one of its own.
    int programOnly = 1;
    QApplication application(programOnly, argv);
    QApplication::setOrganizationName(u"Halvex"_s);
    QApplication::setApplicationName(u"VeskWorkerControl"_s);
    QApplication::setDesktopFileName(u"com.halvex.VeskWorkerControl"_s);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(new ThemeStyle);
    QApplication::setPalette(Theme::palette());
    QApplication::setWindowIcon(applicationIcon());

    QSettings defaults(
        QSettings::NativeFormat, QSettings::UserScope, QApplication::organizationName(),
        QApplication::applicationName());
    defaults.setFallbacksEnabled(false);

    Control control(
        {.port = servicePort(commandLine.arguments()),
         .home = home,
         .toolPath = launchctlTool(QApplication::applicationDirPath()),
         .hostName = QSysInfo::machineHostName(),
         .clock = [] { return std::chrono::system_clock::now(); },
         .defaults = defaults,
         .setupRequested = commandLine.setup()});
    onReopen(&control, [&control] { control.openDashboard(); });
    control.applicationDidFinishLaunching();
    return QApplication::exec();
}

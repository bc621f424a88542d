#pragma once

#include <QObject>

#include <memory>

namespace vesk {

/// What the desktop asks of the running program: to show itself, or one of its actions. Main
/// thread only.
class DesktopRequests : public QObject {
    Q_OBJECT

public:
    /// Names of actions, as desktops know them.
    static constexpr QStringView startAction = u"start";
    static constexpr QStringView settingsAction = u"settings";
    static constexpr QStringView setupAction = u"setup";
    static constexpr QStringView quitAction = u"quit";

    /// When an action was chosen: AtLaunch if the program was started for it.
    enum class Occasion { AtLaunch, WhileRunning };

    /// Listens from now on, as this system does it; needs the application object.
    [[nodiscard]] static std::unique_ptr<DesktopRequests> listen();

signals:
    /// A person asks for the program again.
    void openRequested();
    /// The user chose the action `name`, which may be unknown.
    void actionRequested(const QString& name, vesk::DesktopRequests::Occasion occasion);
};

/// Has the copy that runs already show its window, or carry out `action` when that is not empty.
/// Returns whether it could be reached, after a second at most. Needs an application object, and
/// the process must end by std::_Exit() then: a thread may be left that waits for the session bus.
[[nodiscard]] bool askRunningCopy(QStringView action);

} // namespace vesk

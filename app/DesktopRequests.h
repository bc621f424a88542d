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

    /// Listens from now on, as this system does it; needs the application object.
    [[nodiscard]] static std::unique_ptr<DesktopRequests> listen();

signals:
    /// A person asks for the program again.
    void openRequested();
    /// A person chose the action `name`, which may be none of ours.
    void actionRequested(const QString& name);
};

/// Has the copy that runs already show its window, or carry out `action` when that is not empty.
/// Returns when it has been asked, after a second at most; nothing happens where it cannot be
/// reached. Needs an application object.
void askRunningCopy(QStringView action);

} // namespace vesk

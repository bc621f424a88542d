#pragma once

#include "agent/ToolRun.h"

#include <QString>
#include <QStringList>

namespace vesk {

/// The user's systemd, asked through its tool. Every call waits for the answer.
class UserManager {
public:
    struct UnitState {
        bool loaded = false;    ///< its unit file is known and sound
        qint64 mainProcess = 0; ///< process id, 0 while it does not run
        QString file;           ///< where the unit comes from
        QString source;         ///< what the unit was made from

        qint64 lastProcess = 0; ///< the main process, also when it has ended
        /// What of the last process systemd could not do, as an exit status of its own; 0 when it
        /// executed the program.
        int executionFailure = 0;
    };

    /// The exit statuses with which systemd tells that it could not do what a unit asks.
    static constexpr int folderFailure = 200;
    static constexpr int programFailure = 203;
    static constexpr int outputFailure = 209;
    static constexpr int errorFailure = 222;

    /// What systemd's tool shows of a unit, a property a line.
    [[nodiscard]] static UnitState readState(const QString& shown);

    /// `runtimeFolder` is the user's XDG_RUNTIME_DIR.
    UserManager(QString systemctl, QString runtimeFolder);

    /// The folder for units that live until the user's last session ends.
    [[nodiscard]] QString unitFolder() const;

    [[nodiscard]] std::variant<UnitState, ServiceError> state(const QString& unit) const;

    /// Kills the unit's processes, if there are any, and starts it; returns when its program has
    /// been executed. One that has ended by then was started all the same.
    [[nodiscard]] std::optional<ServiceError> restart(const QString& unit) const;

    [[nodiscard]] std::optional<ServiceError> stop(const QString& unit) const;

    /// Reads all units again.
    [[nodiscard]] std::optional<ServiceError> reload() const;

private:
    [[nodiscard]] ToolResult call(const QStringList& arguments) const;

    QString systemctl_;
    QString runtimeFolder_;
};

} // namespace vesk

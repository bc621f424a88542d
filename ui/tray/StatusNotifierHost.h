#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace vesk {

/// Knows whether a host of freedesktop's StatusNotifierItem protocol shows items: a watcher on the
/// session bus keeps the list of both.
class StatusNotifierHost final : public QObject {
    Q_OBJECT

public:
    explicit StatusNotifierHost(QDBusConnection bus);

    /// Whether the question has been answered, with or without a host.
    [[nodiscard]] bool isKnown() const { return watcher_.has_value(); }

    [[nodiscard]] bool isPresent() const { return watcher_.has_value() && !watcher_->isEmpty(); }

signals:
    /// Also when another watcher took over, which knows no items yet.
    void changed();

private:
    Q_SLOT void ask();
    void set(const QString& watcher);

    QDBusConnection bus_;
    std::unique_ptr<QDBusPendingCallWatcher> question_;
    std::optional<QString> watcher_; ///< the one that has a host; empty without
};

} // namespace vesk

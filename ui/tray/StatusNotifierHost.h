#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QScopedPointer>
#include <QString>

#include <functional>
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
    void askForOwner();
    void setOwner(const QString& owner);
    Q_SLOT void ask();
    Q_SLOT void forget();
    void send(const QDBusMessage& question, std::function<void(const QDBusPendingCall&)> answered);
    void set(const QString& watcher);

    QDBusConnection bus_;
    std::unique_ptr<QDBusPendingCallWatcher, QScopedPointerDeleteLater> question_;
    QString owner_;                  ///< unique bus name of the watcher; empty without one
    std::optional<QString> watcher_; ///< the watcher that has a host; empty without
};

} // namespace vesk

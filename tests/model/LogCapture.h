#pragma once

#include <QLoggingCategory>
#include <QMutex>
#include <QStringList>

namespace vesk {

/// While it lives our own categories are switched on, and what they and all others say comes here.
/// One at a time.
class LogCapture {
public:
    LogCapture() {
        current = this;
        before_ = qInstallMessageHandler(take);
        QLoggingCategory::setFilterRules(QStringLiteral("vesk.*=true"));
    }
    ~LogCapture() {
        QLoggingCategory::setFilterRules({});
        qInstallMessageHandler(before_);
        current = nullptr;
    }
    Q_DISABLE_COPY_MOVE(LogCapture)

    /// "category: line" each.
    [[nodiscard]] QStringList lines() const {
        const QMutexLocker lock(&mutex_);
        return lines_;
    }

    /// Those that begin so.
    [[nodiscard]] QStringList lines(const QString& beginning) const {
        QStringList found;
        for (const QString& line : lines()) {
            if (line.startsWith(beginning)) {
                found += line;
            }
        }
        return found;
    }

private:
    static void
    take(QtMsgType /*type*/, const QMessageLogContext& context, const QString& message) {
        const QMutexLocker lock(&current->mutex_);
        current->lines_ += QString::fromUtf8(context.category) + QStringLiteral(": ") + message;
    }

    static inline LogCapture* current = nullptr;

    QtMessageHandler before_ = nullptr;
    mutable QMutex mutex_;
    QStringList lines_;
};

} // namespace vesk

#pragma once

#include <QObject>

class QCoreApplication;

namespace vesk {

/// Ends the application as soon as it is asked to, by our own menu, the session or the system. The
/// toolkit would ask each open window first and forget the request when one stays; here a window
/// is only ever asked to close by a person.
class PromptQuit final : public QObject {
    Q_OBJECT

public:
    explicit PromptQuit(QCoreApplication& application);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QCoreApplication& application_;
};

} // namespace vesk

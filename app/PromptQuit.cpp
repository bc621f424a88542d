#include "app/PromptQuit.h"

#include <QCoreApplication>
#include <QEvent>

namespace vesk {

PromptQuit::PromptQuit(QCoreApplication& application) : application_(application) {
    application_.installEventFilter(this);
}

bool PromptQuit::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &application_ || event->type() != QEvent::Quit) {
        return QObject::eventFilter(watched, event);
    }
    event->accept();
    QCoreApplication::exit();
    return true;
}

} // namespace vesk

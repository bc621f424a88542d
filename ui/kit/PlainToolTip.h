#pragma once

#include <QString>

class QHelpEvent;
class QWidget;

namespace vesk {

/// Shows `text` as the tool tip of `widget`, plain and wrapped; texts that come from the service
/// must not be taken for markup. An empty one shows none.
void showPlainToolTip(const QHelpEvent& event, QWidget& widget, const QString& text);

} // namespace vesk

#pragma once

#include <QString>

class QHelpEvent;
class QWidget;

namespace vesk {

/// Shows the tool tip of `widget` as plain text that wraps; texts that come from the service must
/// not be taken for markup.
void showPlainToolTip(const QHelpEvent& event, QWidget& widget);

} // namespace vesk

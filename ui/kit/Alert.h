#pragma once

#include "ui/kit/ModalDialog.h"

namespace vesk {

/// One message about a failed action, as a sheet on the window that it belongs to. It stays until a
/// person dismisses it, and deletes itself then.
class Alert final : public ModalDialog {
    Q_OBJECT

public:
    Alert(const QString& message, QWidget* parent);
};

} // namespace vesk

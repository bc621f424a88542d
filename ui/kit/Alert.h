#pragma once

#include <QDialog>

namespace vesk {

/// One message about a failed action, as a sheet on the window that it belongs to. It deletes
/// itself when it is closed.
class Alert final : public QDialog {
    Q_OBJECT

public:
    Alert(const QString& message, QWidget* parent);
};

} // namespace vesk

#include "app/HostName.h"

#include <QSysInfo>

namespace vesk {

QString hostName() {
    return QSysInfo::machineHostName();
}

} // namespace vesk

#include "agent/LaunchctlTool.h"

#include <QDir>
#include <QFileInfo>

namespace vesk {

using namespace Qt::StringLiterals;

QString launchctlTool(const QString& executableFolder) {
    auto systemTool = u"/bin/launchctl"_s;
    if (QFileInfo::exists(systemTool)) {
        return systemTool;
    }
    for (const auto& folder : {u"."_s, QStringLiteral(VESK_COMPANION_FOLDER)}) {
        QString tool = QDir::cleanPath(executableFolder + u'/' + folder + u"/vesk-launchctl"_s);
        if (QFileInfo::exists(tool)) {
            return tool;
        }
    }
    return systemTool;
}

} // namespace vesk

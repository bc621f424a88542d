#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

namespace vesk {

/// Names that `#include <...>` finds in the toolkit's parts, as "QColor" or "qcolor.h".
struct ToolkitHeaders {
    QSet<QString> screen;  ///< pictures, windows and widgets
    QSet<QString> network; ///< sockets and requests
};

/// What is wrong with the includes of a source file, or with what a CMakeLists.txt links: one line
/// each. `path` is relative to the source tree and decides which rules hold.
[[nodiscard]] QStringList
layerViolations(const QString& path, const QString& text, const ToolkitHeaders& toolkit);

} // namespace vesk

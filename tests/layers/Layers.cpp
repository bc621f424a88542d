#include "tests/layers/Layers.h"

#include <QDir>
#include <QRegularExpression>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// The floors from the ground up.
const QStringList floors{u"model"_s, u"service"_s, u"agent"_s, u"ui"_s, u"app"_s};

const QStringList screenParts{u"Gui"_s,    u"Widgets"_s,       u"Svg"_s,         u"SvgWidgets"_s,
                              u"OpenGL"_s, u"OpenGLWidgets"_s, u"PrintSupport"_s};

const QStringList networkParts{u"Network"_s};

QString roomOf(const QString& path) {
    return path.section(u'/', 0, 0);
}

bool isWorkerSimulator(const QString& path) {
    return path.startsWith(u"tools/worker-sim/");
}

/// Floors that must build without a screen.
bool isScreenless(const QString& room) {
    return floors.contains(room) && floors.indexOf(room) < floors.indexOf(u"ui"_s);
}

QString replaced(QString text, const QString& pattern, const QString& by) {
    const QRegularExpression expression(
        pattern,
        QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption);
    return text.replace(expression, by);
}

/// Where an include leads: "./" and "../" count from the file that holds it, all else from the
/// root.
QString targetOf(const QString& path, const QString& include) {
    if (!include.startsWith(u'.')) {
        return QDir::cleanPath(include);
    }
    return QDir::cleanPath(path.section(u'/', 0, -2) + u'/' + include);
}

bool isToolkitPart(const QString& include, const QStringList& parts, const QSet<QString>& headers) {
    for (const QString& part : parts) {
        if (include.startsWith(u"Qt"_s + part + u'/') || include == u"Qt"_s + part) {
            return true;
        }
    }
    return headers.contains(include);
}

/// Why `path` may not include `include`; empty when it may.
QString whyNot(const QString& path, const QString& include, const ToolkitHeaders& toolkit) {
    const QString room = roomOf(path);
    const QString target = roomOf(targetOf(path, include));
    if (isWorkerSimulator(path) && floors.contains(target)) {
        return u"the simulated worker knows nothing of the product"_s;
    }
    if (!floors.contains(room)) {
        return {};
    }
    if (target == u"tools" || target == u"tests") {
        return u"the product knows nothing of its tools and tests"_s;
    }
    if (floors.indexOf(target) > floors.indexOf(room)) {
        return room + u" is below "_s + target;
    }
    if (isScreenless(room) && isToolkitPart(include, screenParts, toolkit.screen)) {
        return room + u" works without a screen"_s;
    }
    const bool reachesOut = isToolkitPart(include, networkParts, toolkit.network)
                            || include.startsWith(u"curl/") || include == u"QProcess"
                            || include == u"QtCore/QProcess";
    if ((room == u"ui" || room == u"model") && reachesOut) {
        return room + u" reaches neither network nor processes"_s;
    }
    return {};
}

QStringList
includeViolations(const QString& path, const QString& text, const ToolkitHeaders& toolkit) {
    const QString joined = replaced(text, u"\\\\\\r?\\n"_s, u" "_s);
    const QString code = replaced(joined, u"/\\*.*?\\*/"_s, u" "_s);
    static const QRegularExpression directive(
        u"^[ \\t]*#[ \\t]*(?:include|import)\\b[ \\t]*(?:[\"<]([^\">\\n]+)[\">])?"_s,
        QRegularExpression::MultilineOption);
    QStringList violations;
    for (const auto& match : directive.globalMatch(code)) {
        const QString include = match.captured(1).trimmed();
        const QString reason =
            include.isEmpty() ? u"an include must name its file"_s : whyNot(path, include, toolkit);
        if (!reason.isEmpty()) {
            violations.append(path + u" includes \""_s + include + u"\": "_s + reason);
        }
    }
    return violations;
}

QStringList linkViolations(const QString& path, const QString& text) {
    const QString room = roomOf(path);
    const QString code = replaced(text, u"#[^\\n]*"_s, QString());
    static const QRegularExpression target(u"\\bvesk_(\\w+)|\\bQt6?::(\\w+)"_s);
    QStringList violations;
    for (const auto& match : target.globalMatch(code)) {
        const QString floor = match.captured(1);
        const QString part = match.captured(2);
        QString reason;
        if (isWorkerSimulator(path) && floors.contains(floor)) {
            reason = u"the simulated worker knows nothing of the product"_s;
        } else if (floors.contains(room) && floors.indexOf(floor) > floors.indexOf(room)) {
            reason = room + u" is below "_s + floor;
        } else if (isScreenless(room) && screenParts.contains(part)) {
            reason = room + u" works without a screen"_s;
        } else if ((room == u"ui" || room == u"model") && networkParts.contains(part)) {
            reason = room + u" reaches neither network nor processes"_s;
        }
        if (!reason.isEmpty()) {
            violations.append(path + u" links "_s + match.captured() + u": "_s + reason);
        }
    }
    return violations;
}

} // namespace

QStringList
layerViolations(const QString& path, const QString& text, const ToolkitHeaders& toolkit) {
    return path.endsWith(u"/CMakeLists.txt") ? linkViolations(path, text)
                                             : includeViolations(path, text, toolkit);
}

} // namespace vesk

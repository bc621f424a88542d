#include "tests/programs/Layers.h"

#include <QDir>
#include <QRegularExpression>

#include <algorithm>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// A room of the product and those that its files may lead to, besides itself.
struct Arrows {
    QString room;
    QStringList to;
};

/// The drawing in docs/architecture.md, from the ground up.
const QList<Arrows> drawing{
    {u"model"_s, {}},
    {u"service"_s, {u"model"_s}},
    {u"agent"_s, {u"model"_s}},
    {u"agent/systemd"_s, {u"agent"_s}},
    {u"ui/texts"_s, {u"model"_s}},
    {u"ui/kit"_s, {u"ui/texts"_s}},
    {u"ui/dashboard"_s, {u"ui/kit"_s, u"ui/texts"_s}},
    {u"ui/tray"_s, {u"ui/kit"_s, u"ui/texts"_s}},
    {u"ui/card"_s, {u"ui/kit"_s, u"ui/texts"_s, u"model"_s}},
    {u"ui/settings"_s, {u"ui/kit"_s, u"ui/texts"_s, u"model"_s}},
    {u"ui/setup"_s, {u"ui/kit"_s, u"ui/texts"_s, u"model"_s}},
};

const QStringList screenParts{u"Gui"_s,    u"Widgets"_s,       u"Svg"_s,         u"SvgWidgets"_s,
                              u"OpenGL"_s, u"OpenGLWidgets"_s, u"PrintSupport"_s};

const QStringList networkParts{u"Network"_s};

/// The room of a path, the innermost that is in the drawing; else its first folder.
QString roomOf(const QString& path) {
    QString room = path.section(u'/', 0, 0);
    for (const Arrows& arrows : drawing) {
        if (path.startsWith(arrows.room + u'/') && arrows.room.size() > room.size()) {
            room = arrows.room;
        }
    }
    return room;
}

/// The room that a library of ours is built from: "vesk_ui_kit" without its first word.
QString roomOfLibrary(const QString& name) {
    for (const Arrows& arrows : drawing) {
        if (QString(arrows.room).replace(u'/', u'_') == name) {
            return arrows.room;
        }
    }
    return name;
}

bool isInDrawing(const QString& room) {
    return std::any_of(
        drawing.begin(), drawing.end(), [&](const Arrows& arrows) { return arrows.room == room; });
}

/// Whether `room` is the product's, inside the drawing or on top of it.
bool isProduct(const QString& room) {
    return isInDrawing(room) || room == u"app" || room == u"ui";
}

/// Why no arrow leads from one room to the other; empty where one does. `app` meets everything,
/// `ui` only gathers its rooms.
QString whyNoArrow(const QString& from, const QString& to) {
    if (!isProduct(from) || !isProduct(to) || from == to || from == u"app") {
        return {};
    }
    if (from == u"ui" && to.startsWith(u"ui/")) {
        return {};
    }
    for (const Arrows& arrows : drawing) {
        if (arrows.room == from && arrows.to.contains(to)) {
            return {};
        }
    }
    return u"no arrow leads from "_s + from + u" to "_s + to;
}

bool isWorkerSimulator(const QString& path) {
    return path.startsWith(u"tools/worker-sim/");
}

/// Rooms that must build without a screen.
bool isScreenless(const QString& room) {
    return isInDrawing(room) && (!room.startsWith(u"ui/") || room == u"ui/texts");
}

/// Whether `include` leads to the toolkit's JSON, by one of its names "QJsonObject",
/// "qjsonobject.h".
bool isJson(const QString& include) {
    return include.section(u'/', -1).startsWith(u"QJson", Qt::CaseInsensitive);
}

/// Rooms for which the service's documents are values: JSON ends in the service's room.
bool readsNoJson(const QString& room) {
    return isProduct(room) && room != u"service";
}

/// Rooms that reach neither network nor processes.
bool isInward(const QString& room) {
    return room == u"model" || room.startsWith(u"ui/");
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
    if (isWorkerSimulator(path) && isProduct(target)) {
        return u"the simulated worker knows nothing of the product"_s;
    }
    if (!isProduct(room)) {
        return {};
    }
    if (target == u"tools" || target == u"tests") {
        return u"the product knows nothing of its tools and tests"_s;
    }
    if (const QString reason = whyNoArrow(room, target); !reason.isEmpty()) {
        return reason;
    }
    if (isScreenless(room) && isToolkitPart(include, screenParts, toolkit.screen)) {
        return room + u" works without a screen"_s;
    }
    if (readsNoJson(room) && isJson(include)) {
        return room + u" reads no JSON"_s;
    }
    const bool reachesOut = isToolkitPart(include, networkParts, toolkit.network)
                            || include.startsWith(u"boost/") || include == u"QProcess"
                            || include == u"QtCore/QProcess";
    if (isInward(room) && reachesOut) {
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
        const QString library = roomOfLibrary(match.captured(1));
        const QString part = match.captured(2);
        QString reason = whyNoArrow(room, library);
        if (isWorkerSimulator(path) && isProduct(library)) {
            reason = u"the simulated worker knows nothing of the product"_s;
        } else if (isScreenless(room) && screenParts.contains(part)) {
            reason = room + u" works without a screen"_s;
        } else if (isInward(room) && networkParts.contains(part)) {
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

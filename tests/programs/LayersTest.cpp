#include "tests/programs/Layers.h"
#include "tests/TestProgram.h"

#include <QDir>
#include <QDirIterator>
#include <QLibraryInfo>
#include <QTest>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QSet<QString> headersOf(const QString& part) {
    const QStringList places{
        QLibraryInfo::path(QLibraryInfo::HeadersPath) + u"/Qt"_s + part,
        QLibraryInfo::path(QLibraryInfo::LibrariesPath) + u"/Qt"_s + part
            + u".framework/Headers"_s};
    QSet<QString> names;
    for (const QString& place : places) {
        const QStringList found = QDir(place).entryList(QDir::Files);
        names.unite(QSet<QString>(found.begin(), found.end()));
    }
    return names;
}

ToolkitHeaders toolkitHeaders() {
    const QSet<QString> core = headersOf(u"Core"_s);
    return {
        (headersOf(u"Gui"_s) + headersOf(u"Widgets"_s) + headersOf(u"Svg"_s)) - core,
        headersOf(u"Network"_s) - core};
}

QString contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

class LayersTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void sourceTree();
    void synthetic_data();
    void synthetic();
    void everyViolationIsTold();

private:
    ToolkitHeaders toolkit_;
};

void LayersTest::initTestCase() {
    toolkit_ = toolkitHeaders();
    QVERIFY(toolkit_.screen.contains(u"QColor"_s));
    QVERIFY(toolkit_.screen.contains(u"qwidget.h"_s));
}

void LayersTest::sourceTree() {
    const QDir root(QStringLiteral(VESK_SOURCE_DIR));
    QStringList violations;
    int files = 0;
    for (const QString& room :
         {u"model"_s, u"service"_s, u"agent"_s, u"ui"_s, u"app"_s, u"tools"_s}) {
        int filesOfRoom = 0;
        QDirIterator entries(
            root.filePath(room), {u"*.h"_s, u"*.hpp"_s, u"*.cpp"_s, u"*.mm"_s, u"CMakeLists.txt"_s},
            QDir::Files, QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const QString file = entries.next();
            violations += layerViolations(root.relativeFilePath(file), contents(file), toolkit_);
            ++filesOfRoom;
        }
        QVERIFY2(filesOfRoom > 0, qPrintable(room));
        files += filesOfRoom;
    }
    QVERIFY2(violations.isEmpty(), qPrintable(u'\n' + violations.join(u'\n')));
    qInfo("%d files", files);
}

void LayersTest::synthetic_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("allowed");

    const auto row = [](const char* path, const char* text, bool allowed) {
        QTest::addRow("%s: %s", path, text)
            << QString::fromLatin1(path) << QString::fromLatin1(text) << allowed;
    };

    // Written out, so that the drawing and this table must both change for a new arrow.
    const QList<QByteArray> rooms{"model",    "service",     "agent",        "agent/systemd",
                                  "ui/texts", "ui/kit",      "ui/dashboard", "ui/tray",
                                  "ui/card",  "ui/settings", "ui/setup",     "app"};
    const auto leads = [](const QByteArray& from, const QByteArray& to) {
        const bool screen = from.startsWith("ui/") && from != "ui/texts" && from != "ui/kit";
        return from == to || from == "app"
               || (to == "model" && (from == "service" || from == "agent"))
               || (from == "agent/systemd" && to == "agent")
               || (from == "ui/texts" && to == "model") || (from == "ui/kit" && to == "ui/texts")
               || ((from == "ui/card" || from == "ui/settings" || from == "ui/setup")
                   && to == "model")
               || (screen && (to == "ui/kit" || to == "ui/texts"));
    };
    for (const QByteArray& from : rooms) {
        for (const QByteArray& to : rooms) {
            row(from + "/File.cpp", "#include \"" + to + "/Other.h\"", leads(from, to));
            row(from + "/CMakeLists.txt", "LINK vesk_" + QByteArray(to).replace('/', '_'),
                leads(from, to));
        }
        const QByteArray path = from + "/deep/room/File.h";
        row(path, "#include \"tools/worker-sim/Rack.h\"", false);
        row(path, "#include \"tests/service/JsonText.h\"", false);
        row(path, "#include <vector>", true);
        row("tools/worker-sim/Rack.cpp", "#include \"" + from + "/File.h\"", false);
        row("tools/worker-sim/CMakeLists.txt",
            "target_link_libraries(vesk-worker-sim vesk_" + QByteArray(from).replace('/', '_')
                + ")",
            false);
        row("tools/gallery/Gallery.cpp", "#include \"" + from + "/File.h\"", true);
        row("tests/app/ControlTest.cpp", "#include \"" + from + "/File.h\"", true);
    }

    for (const char* header :
         {"<QColor>", "<QtGui/QColor>", "<QtGui>", "<qcolor.h>", "<QWidget>", "<QtWidgets/QLabel>",
          "<QApplication>", "<QSvgRenderer>", "<QtSvg/QSvgRenderer>", "\"QPainter\""}) {
        const QByteArray include = QByteArray("#include ") + header;
        row("model/File.cpp", include, false);
        row("service/File.cpp", include, false);
        row("agent/systemd/File.cpp", include, false);
        row("ui/texts/File.cpp", include, false);
        row("ui/kit/File.cpp", include, true);
        row("app/File.cpp", include, true);
    }
    for (const char* header : {"<QString>", "<QtCore/QString>", "<QTimer>", "<QPoint>"}) {
        row("model/File.cpp", QByteArray("#include ") + header, true);
    }
    for (const char* header :
         {"<QJsonObject>", "<QJsonDocument>", "<QtCore/QJsonArray>", "<qjsonvalue.h>"}) {
        for (const QByteArray& room : rooms) {
            row(room + "/File.cpp", QByteArray("#include ") + header, room == "service");
        }
        row("tools/gallery/Documents.cpp", QByteArray("#include ") + header, true);
    }
    for (const char* header : {"<boost/asio/ip/tcp.hpp>", "<QProcess>", "<QtNetwork/QTcpSocket>"}) {
        const QByteArray include = QByteArray("#include ") + header;
        row("ui/settings/File.cpp", include, false);
        row("model/File.cpp", include, false);
        row("service/File.cpp", include, true);
        row("app/File.cpp", include, true);
    }

    for (const char* part : {"Gui", "Widgets", "Svg"}) {
        const QByteArray link = QByteArray("LINK PUBLIC Qt6::") + part;
        row("model/CMakeLists.txt", link, false);
        row("service/CMakeLists.txt", link, false);
        row("agent/CMakeLists.txt", link, false);
        row("agent/systemd/CMakeLists.txt", link, false);
        row("ui/texts/CMakeLists.txt", link, false);
        row("ui/kit/CMakeLists.txt", link, true);
    }
    row("model/CMakeLists.txt", "vesk_library(vesk_model SOURCES A.cpp LINK Qt6::Core)", true);
    row("model/CMakeLists.txt", "# the screen is not for us: Qt6::Gui, vesk_ui", true);
    row("model/CMakeLists.txt", "target_link_libraries(vesk_model Qt::Widgets)", false);

    row("model/File.cpp", "  #  include   <ui/kit/File.h>", false);
    row("model/File.cpp", "#import \"ui/kit/File.h\"", false);
    row("model/File.cpp", "#include \"../ui/kit/File.h\"", false);
    row("agent/systemd/File.cpp", "#include \"../../ui/kit/File.h\"", false);
    row("agent/systemd/File.cpp", "#include \"../File.h\"", true);
    row("model/File.cpp", "#include \"./File.h\"", true);
    row("model/File.cpp", "#include \"model/../ui/kit/File.h\"", false);
    row("model/File.cpp", "#include \\\n  \"ui/kit/File.h\"", false);
    row("model/File.cpp", "#include /* odd */ \"ui/kit/File.h\"", false);
    row("model/File.cpp", "#include HEADER", false);
    row("model/File.cpp", "// #include \"ui/File.h\"", true);
    row("model/File.cpp", "/*\n#include \"ui/File.h\"\n*/", true);
    row("model/File.cpp", "int includes = 1; // ui/File.h", true);
}

void LayersTest::synthetic() {
    QFETCH(const QString, path);
    QFETCH(const QString, text);
    QFETCH(const bool, allowed);
    QCOMPARE(
        layerViolations(path, u"#pragma once\n"_s + text + u'\n', toolkit_).isEmpty(), allowed);
}

void LayersTest::everyViolationIsTold() {
    const QString text = u"#include \"ui/kit/A.h\"\n#include \"model/B.h\"\n#include <QColor>\n"_s;
    const QStringList expected{
        u"model/File.cpp includes \"ui/kit/A.h\": no arrow leads from model to ui/kit"_s,
        u"model/File.cpp includes \"QColor\": model works without a screen"_s};
    QCOMPARE(layerViolations(u"model/File.cpp"_s, text, toolkit_), expected);
}

} // namespace vesk

VESK_TEST(vesk::LayersTest)
#include "LayersTest.moc"

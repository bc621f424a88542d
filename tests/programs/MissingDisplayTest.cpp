#include "tests/TestProgram.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Variables = QList<std::pair<QString, QString>>;

QProcessEnvironment environmentWith(const QTemporaryDir& home, const Variables& variables) {
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const char* name :
         {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_QPA_PLATFORM_PLUGIN_PATH",
          "QT_LOGGING_RULES", "XDG_SESSION_TYPE"}) {
        environment.remove(QLatin1StringView(name));
    }
    environment.insert(u"HOME"_s, home.path());
    environment.insert(u"XDG_RUNTIME_DIR"_s, home.path());
    for (const auto& [name, value] : variables) {
        environment.insert(name, value);
    }
    return environment;
}

/// The number of an X11 display that no server has.
QString deadDisplay() {
    int number = 900;
    while (QFile::exists(u"/tmp/.X11-unix/X%1"_s.arg(number))) {
        ++number;
    }
    return u":%1"_s.arg(number);
}

} // namespace

/// The start of the real executable where Qt can open no display.
class MissingDisplayTest final : public QObject {
    Q_OBJECT

private slots:
    void programEndsWithOneLine_data();
    void programEndsWithOneLine();
};

void MissingDisplayTest::programEndsWithOneLine_data() {
    QTest::addColumn<Variables>("variables");
    QTest::addColumn<QString>("values");
    const QString x11 = deadDisplay();
    QTest::newRow("no variable set")
        << Variables() << u"DISPLAY is not set, WAYLAND_DISPLAY is not set"_s;
    QTest::newRow("dead X11 display") << Variables{{u"DISPLAY"_s, x11}}
                                      << u"DISPLAY=\"%1\", WAYLAND_DISPLAY is not set"_s.arg(x11);
    QTest::newRow("dead Wayland display") << Variables{{u"WAYLAND_DISPLAY"_s, u"none"_s}}
                                          << u"DISPLAY is not set, WAYLAND_DISPLAY=\"none\""_s;
    QTest::newRow("empty variables")
        << Variables{{u"DISPLAY"_s, QString()}, {u"WAYLAND_DISPLAY"_s, QString()}}
        << u"DISPLAY=\"\", WAYLAND_DISPLAY=\"\""_s;
    QTest::newRow("line break in a variable")
        << Variables{{u"DISPLAY"_s, u"a\nb"_s}} << u"DISPLAY=\"a b\", WAYLAND_DISPLAY is not set"_s;
    QTest::newRow("unknown platform")
        << Variables{{u"QT_QPA_PLATFORM"_s, u"nonsense"_s}}
        << u"DISPLAY is not set, WAYLAND_DISPLAY is not set, QT_QPA_PLATFORM=\"nonsense\""_s;
    QTest::newRow("no plugin in the folder")
        << Variables{{u"QT_QPA_PLATFORM_PLUGIN_PATH"_s, u"/nowhere"_s}}
        << u"DISPLAY is not set, WAYLAND_DISPLAY is not set, "
           "QT_QPA_PLATFORM_PLUGIN_PATH=\"/nowhere\""_s;
}

void MissingDisplayTest::programEndsWithOneLine() {
    QFETCH(const Variables, variables);
    QFETCH(const QString, values);
    const QTemporaryDir home;
    QProcess product;
    product.setProcessEnvironment(environmentWith(home, variables));
    product.start(QStringLiteral(VESK_DASHBOARD));
    QVERIFY(product.waitForFinished());
    QCOMPARE(product.exitStatus(), QProcess::NormalExit);
    QCOMPARE(product.exitCode(), 1);
    QCOMPARE(
        QString::fromUtf8(product.readAllStandardError()),
        u"VeskWorkerControl: no display could be opened: %1\n"_s.arg(values));
    QCOMPARE(product.readAllStandardOutput(), QByteArray());
}

VESK_TEST(MissingDisplayTest)
#include "MissingDisplayTest.moc"

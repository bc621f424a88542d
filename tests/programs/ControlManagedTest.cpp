#include "agent/Launchctl.h"
#include "agent/ServiceLocations.h"
#include "agent/systemd/ServiceUnit.h"
#include "app/Control.h"
#include "service/HealthReader.h"
#include "service/HttpSession.h"
#include "tests/TestProgram.h"
#include "tests/agent/PropertyListSamples.h"
#include "tests/programs/PrivateManager.h"
#include "tests/tools/KeptPort.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QSettings>
#include <QTest>

#include <memory>

using namespace vesk;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int patience = 30'000;

QPushButton* startButton() {
    for (QWidget* widget : QApplication::allWidgets()) {
        if (widget->objectName() == u"start") {
            return qobject_cast<QPushButton*>(widget);
        }
    }
    return nullptr;
}

} // namespace

/// The whole way: the controller, the companion tool, a real user manager and a real worker.
class ControlManagedTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir home_;
    PrivateManager manager_{home_.path()};
    const KeptPort port_;
    QSettings defaults_{home_.filePath(u"defaults.ini"_s), QSettings::IniFormat};
    TimePoint now_{1'000'000s};
    HttpSession session_;
    Launchctl tool_{QStringLiteral(VESK_COMPANION)};
    std::unique_ptr<Control> control_;

    static QByteArray property(const QString& name) {
        return PrivateManager::systemctl({u"show"_s, u"--value"_s, u"--property="_s + name,
                                          unitName(ServiceLocations::serviceLabel.toString())})
            .trimmed();
    }

    void installTemplate() const {
        const QString path = ServiceLocations(home_.path()).templateURL();
        QFile file(path);
        QVERIFY(QDir().mkpath(QFileInfo(path).path()) && file.open(QFile::WriteOnly));
        file.write(agentPropertyList(
            "<key>KeepAlive</key><true/><key>ThrottleInterval</key><integer>1</integer>"
            "<key>ProgramArguments</key><array><string>" VESK_WORKER_SIM
            "</string><string>--port</string><string>"
            + QByteArray::number(port_.number()) + "</string></array>"));
    }

    /// Opens the dashboard, which asks the service each time, until that is so.
    bool becomes(bool online) {
        return QTest::qWaitFor(
            [this, online] {
                control_->openDashboard();
                return control_->online() == online;
            },
            patience);
    }

    /// The worker's process lives on without a listener, until it is restarted.
    void closeListener() {
        bool done = false;
        session_.send(
            postRequest(port_.number(), "/sim/listener", {{u"closed_seconds"_s, 3600}}), this,
            readHealth, [&](const auto& /*answer*/) { done = true; });
        QVERIFY(QTest::qWaitFor([&] { return done; }));
        QVERIFY(becomes(false));
    }

private slots:
    void startHealAndLeave() {
        if (!manager_.start()) {
            QSKIP(qPrintable(
                u"NO SERVICE MANAGER: none can be started on this machine, so that nothing of the "
                "managed service was tested. "_s
                + QString::fromUtf8(manager_.log())));
        }
        installTemplate();
        defaults_.setValue("setupVisitedV2", true);
        control_ = std::make_unique<Control>(Control::Surroundings{
            .port = port_.number(),
            .home = home_.path(),
            .hostName = u"bench"_s,
            .clock = [this] { return now_; },
            .exchange = session_,
            .tool = tool_,
            .defaults = defaults_});
        control_->applicationDidFinishLaunching();
        QTRY_VERIFY(startButton());
        QTest::mouseClick(startButton(), Qt::LeftButton);
        QVERIFY(becomes(true));
        const QByteArray first = property(u"MainPID"_s);
        QVERIFY(first.toLongLong() > 0);

        closeListener();
        QTRY_VERIFY_WITH_TIMEOUT(property(u"MainPID"_s) != first, patience);
        QVERIFY(becomes(true));
        const QByteArray second = property(u"MainPID"_s);
        QVERIFY(second.toLongLong() > 0);

        // Within the cool-down it is left alone, however many fetches fail.
        now_ += 89s;
        closeListener();
        QVERIFY(!QTest::qWaitFor(
            [&] {
                control_->openDashboard();
                return property(u"MainPID"_s) != second;
            },
            1500));
        now_ += 1s;
        QVERIFY(becomes(true));
        QVERIFY(property(u"MainPID"_s) != second);

        // Without the dashboard the service goes on.
        const QByteArray last = property(u"MainPID"_s);
        control_.reset();
        QCOMPARE(property(u"ActiveState"_s), "active");
        QCOMPARE(property(u"MainPID"_s), last);
    }
};

VESK_WIDGET_TEST(ControlManagedTest)
#include "ControlManagedTest.moc"

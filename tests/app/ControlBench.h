#pragma once

#include "tests/service/HttpPeer.h"

#include "agent/Launchctl.h"
#include "app/Control.h"
#include "service/HttpSession.h"
#include "service/RefreshLoop.h"
#include "ui/dashboard/DashboardWindow.h"
#include "ui/kit/Alert.h"
#include "ui/kit/ElidedLabel.h"
#include "ui/kit/Lamp.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace vesk {

/// The real controller with its real window, against a peer and a service tool that the test
/// scripts, in a home folder of its own.
class ControlBench {
public:
    ControlBench()
        : launchctl(home.filePath(QStringLiteral("tool"))),
          defaults(home.filePath(QStringLiteral("defaults.ini")), QSettings::IniFormat) {
        defaults.setValue("setupVisitedV2", true);
        setHealth(R"({"deep_scan_enabled": true})");
        setTool("exit 113");
        launch();
    }

    /// A new controller, as after a restart of the program.
    void launch(bool setupRequested = false) {
        control.reset();
        control = std::make_unique<Control>(Control::Surroundings{
            .port = peer.serverPort(),
            .home = home.path(),
            .hostName = QStringLiteral("bench"),
            .clock = [this] { return now; },
            .exchange = session,
            .tool = launchctl,
            .defaults = defaults,
            .setupRequested = setupRequested});
    }

    /// The health answer from now on; other requests get `other` of their path, or nothing good.
    void setHealth(const QByteArray& json) {
        health = json;
        peer.answerWith([this](QTcpSocket& socket) { answer(socket); });
    }

    void answer(QTcpSocket& socket) {
        const QByteArray path = peer.requests().constLast().head.split(' ').at(1);
        const QByteArray body = path == "/v1/health" ? health : other.value(path);
        if (body == "hold") {
            held = &socket;
            return;
        }
        if (!body.isEmpty()) {
            socket.write(HttpPeer::response("200 OK", body));
        }
        socket.disconnectFromHost();
    }

    void releaseHeld(const QByteArray& json) {
        held->write(HttpPeer::response("200 OK", json));
        held->disconnectFromHost();
        held = nullptr;
    }

    /// The service manager's tool: a shell script, its calls logged.
    void setTool(const QByteArray& script) {
        QFile tool(home.filePath(QStringLiteral("tool")));
        if (!tool.open(QFile::WriteOnly)) {
            qFatal("cannot write the tool");
        }
        tool.write(
            "#!/bin/sh\nprintf '%s\\n' \"$*\" >> '"
            + home.filePath(QStringLiteral("calls")).toUtf8() + "'\n" + script + "\n");
        tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    [[nodiscard]] QList<QByteArray> toolCalls() const {
        QFile calls(home.filePath(QStringLiteral("calls")));
        if (!calls.open(QFile::ReadOnly)) {
            return {};
        }
        QList<QByteArray> lines = calls.readAll().split('\n');
        lines.removeLast();
        return lines;
    }

    [[nodiscard]] qsizetype requestsOf(const QByteArray& start) const {
        return std::count_if(
            peer.requests().begin(), peer.requests().end(),
            [&](const HttpPeer::Request& request) { return request.head.startsWith(start); });
    }

    /// One health fetch from start to end.
    void poll() {
        RefreshLoop& loop = refreshLoop();
        if (!QTest::qWaitFor([&] { return !loop.refreshing(); })) {
            QTest::qFail("a fetch did not end", __FILE__, __LINE__);
        }
        loop.reload();
        if (!QTest::qWaitFor([&] { return !loop.refreshing(); })) {
            QTest::qFail("a fetch did not end", __FILE__, __LINE__);
        }
    }

    [[nodiscard]] RefreshLoop& refreshLoop() const { return *control->findChild<RefreshLoop*>(); }

    [[nodiscard]] static DashboardWindow& window() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* window = qobject_cast<DashboardWindow*>(widget)) {
                return *window;
            }
        }
        qFatal("no dashboard window");
    }

    /// Whether some label of the panel says exactly `text`.
    [[nodiscard]] static bool shows(const QString& text) {
        const auto labels = window().findChildren<ElidedLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&](const ElidedLabel* label) {
            return label->text() == text;
        });
    }

    [[nodiscard]] static QString connection() { return window().findChild<Lamp*>()->text(); }

    /// What the headline tells besides itself.
    [[nodiscard]] static QString statusDetail() {
        for (const ElidedLabel* label : window().findChildren<ElidedLabel*>()) {
            if (!label->accessibleDescription().isEmpty()) {
                return label->accessibleDescription();
            }
        }
        return {};
    }

    [[nodiscard]] static QCheckBox& toggle() { return *window().findChild<QCheckBox*>(); }

    [[nodiscard]] static QPushButton* button(const QString& title) {
        for (auto* button : window().findChildren<QPushButton*>()) {
            if (button->text() == title) {
                return button;
            }
        }
        return nullptr;
    }

    /// The texts of the alerts that are open, with the window that each hangs on.
    [[nodiscard]] static QList<std::pair<QString, QWidget*>> alerts() {
        QList<std::pair<QString, QWidget*>> open;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* alert = qobject_cast<Alert*>(widget);
                alert != nullptr && alert->isVisible()) {
                open.append({alert->accessibleDescription(), alert->parentWidget()});
            }
        }
        return open;
    }

    HttpPeer peer;
    QTemporaryDir home;
    HttpSession session;
    Launchctl launchctl;
    QSettings defaults;
    TimePoint now{std::chrono::seconds(1'000'000)};
    QByteArray health;
    QHash<QByteArray, QByteArray> other;
    QTcpSocket* held = nullptr;
    std::unique_ptr<Control> control;
};

} // namespace vesk

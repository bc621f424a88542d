#pragma once

#include "tests/simulation/SimulatedExchange.h"
#include "tests/simulation/SimulatedTool.h"
#include "tests/simulation/VirtualTimeRun.h"

#include "app/Control.h"
#include "ui/dashboard/DashboardWindow.h"
#include "ui/kit/Alert.h"
#include "ui/kit/ElidedLabel.h"
#include "ui/kit/Lamp.h"

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <memory>

namespace vesk {

/// The real controller with its real window in virtual time, with a service and a service manager
/// that the test plays, in a home folder of its own.
class ControlBench {
public:
    static constexpr qint64 port = 8791;

    ControlBench() : defaults(home.filePath(QStringLiteral("defaults.ini")), QSettings::IniFormat) {
        defaults.setValue("setupVisitedV2", true);
        exchange.requested = [this](std::size_t number, const ServiceRequest& request) {
            answer(number, request);
        };
        tool.started = [this](std::size_t number, const SimulatedTool::Run& run) {
            answer(number, run);
        };
        launch();
    }

    /// A new controller, as after a restart of the program.
    void launch(bool setupRequested = false) {
        control.reset();
        control = std::make_unique<Control>(Control::Surroundings{
            .port = port,
            .home = home.path(),
            .hostName = QStringLiteral("bench"),
            .clock = [] { return VirtualTime::instance().now(); },
            .exchange = exchange,
            .tool = tool,
            .defaults = defaults,
            .setupRequested = setupRequested});
    }

    /// Shows the window and lets the first answers come.
    void open() {
        control->applicationDidFinishLaunching();
        settle();
    }

    /// Long enough for every answer that is not held, and for no poll.
    static void settle() { pass(std::chrono::milliseconds(20)); }

    static void pass(VirtualTime::Duration duration) { VirtualTime::instance().pass(duration); }

    /// Until the next health fetch has its answer. Returns how long that was.
    std::chrono::milliseconds poll() {
        const TimePoint begin = VirtualTime::instance().now();
        const auto before = requestsOf("GET /v1/health");
        while (requestsOf("GET /v1/health") == before) {
            pass(std::chrono::milliseconds(1));
            if (VirtualTime::instance().now() - begin > std::chrono::minutes(1)) {
                QTest::qFail("no fetch came", __FILE__, __LINE__);
                break;
            }
        }
        const TimePoint asked = VirtualTime::instance().now();
        settle();
        return std::chrono::duration_cast<std::chrono::milliseconds>(asked - begin);
    }

    /// Has the answer come that is held.
    void releaseHeld(const QByteArray& json) { exchange.end(*std::exchange(held, {}), json); }

    [[nodiscard]] qsizetype requestsOf(const QByteArray& start) const {
        return exchange.requestsOf(start);
    }

    /// The first words of the tool's runs.
    [[nodiscard]] QStringList toolCalls() const {
        QStringList calls;
        for (const SimulatedTool::Run& run : tool.runs()) {
            calls.append(run.script.isEmpty() ? run.arguments.first() : QStringLiteral("script"));
        }
        return calls;
    }

    [[nodiscard]] static DashboardWindow& window() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* window = qobject_cast<DashboardWindow*>(widget)) {
                return *window;
            }
        }
        qFatal("no dashboard window");
    }

    /// What the controller knows now.
    [[nodiscard]] ServiceFacts facts() const {
        return {
            .lastHealth = control->lastHealth(),
            .online = control->online(),
            .accepting = control->accepting(),
            .changingPolicy = false,
            .starting = false,
            .backendReady = control->backendReady(),
            .port = port,
            .hostName = QStringLiteral("bench")};
    }

    [[nodiscard]] Dashboard connected() const { return connectedDashboard(facts()); }
    [[nodiscard]] Dashboard reconnecting() const { return reconnectingDashboard(connected()); }

    /// Before the service is known to be stopped, too.
    [[nodiscard]] Dashboard stopped(bool starting = false) const {
        ServiceFacts known = facts();
        known.online = false;
        known.starting = starting;
        return disconnectedDashboard(connected(), known);
    }

    /// Whether the window shows the panel of that dashboard, its controls included.
    [[nodiscard]] bool shows(const Dashboard& dashboard) const {
        const CompactPanel panel = compactPanel(dashboard, facts());
        QStringList texts{
            panel.compactStatus, panel.compactRack, panel.compactDevices, panel.compactSummary};
        for (const CompactRow& row : panel.compactRows) {
            texts.append(row.text);
        }
        return std::all_of(
                   texts.begin(), texts.end(), [](const QString& text) { return shows(text); })
               && connection() == panel.connection.text && statusDetail() == panel.statusDetail
               && startButton().text() == panel.compactStart.title
               && startButton().isEnabled() == panel.compactStart.enabled
               && toggle().checkState() == panel.compactToggle.state
               && toggle().isEnabled() == panel.compactToggle.enabled;
    }

    /// Whether some label of the panel has exactly that text.
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

    /// The one that starts the service, or pauses or resumes deep jobs.
    [[nodiscard]] static QPushButton& startButton() {
        return *window().findChild<QPushButton*>(QStringLiteral("start"));
    }

    [[nodiscard]] static QPushButton* button(const QString& title) {
        for (auto* button : window().findChildren<QPushButton*>()) {
            if (button->text() == title) {
                return button;
            }
        }
        qFatal("no such button");
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

    QTemporaryDir home;
    SimulatedExchange exchange;
    SimulatedTool tool;
    QSettings defaults;
    QByteArray health = R"({"deep_scan_enabled": true})"; ///< empty: no good answer
    QHash<QByteArray, QByteArray> other;                  ///< by path; "hold" waits for releaseHeld
    std::optional<std::size_t> held;
    std::optional<ToolResult> description = serviceError(113, {}); ///< none: no answer at all
    std::optional<ToolResult> restart = QString();
    std::optional<ToolResult> startScript = QString();
    std::unique_ptr<Control> control;

private:
    QObject answering_;

    void answer(std::size_t number, const ServiceRequest& request) {
        const QByteArray body = request.path == "/v1/health" ? health : other.value(request.path);
        if (body == "hold") {
            held = number;
            return;
        }
        QTimer::singleShot(1, &answering_, [this, number, body] {
            exchange.end(number, body.isEmpty() ? std::nullopt : std::optional(body));
        });
    }

    void answer(std::size_t number, const SimulatedTool::Run& run) {
        const bool asks = run.arguments.first() == QStringLiteral("print");
        const auto& result = !run.script.isEmpty() ? startScript : asks ? description : restart;
        if (result) {
            QTimer::singleShot(
                1, &answering_, [this, number, result = *result] { tool.end(number, result); });
        }
    }
};

} // namespace vesk

#include "tests/programs/ManagedCase.h"

#include "agent/ServiceStart.h"
#include "agent/ServiceTarget.h"
#include "agent/systemd/ServiceUnit.h"
#include "model/ListenerRecoveryPolicy.h"
#include "tests/Files.h"
#include "tests/agent/PropertyListSamples.h"

#include <QTest>

#include <filesystem>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

QByteArray element(const QByteArray& name, const QString& text) {
    return "<" + name + ">" + text.toHtmlEscaped().toUtf8() + "</" + name + ">";
}

QByteArray list(const QStringList& texts) {
    QByteArray elements;
    for (const QString& text : texts) {
        elements += element("string", text);
    }
    return "<array>" + elements + "</array>";
}

QByteArray dictionary(const QMap<QString, QString>& texts) {
    QByteArray entries;
    for (auto text = texts.begin(); text != texts.end(); ++text) {
        entries += entry(text.key(), text.value());
    }
    return "<dict>" + entries + "</dict>";
}

} // namespace

QByteArray entry(const QString& key, const QString& text) {
    return element("key", key) + element("string", text);
}

QByteArray probeKeys(
    const QString& report, const QStringList& arguments, QMap<QString, QString> variables,
    const QString& program) {
    variables.insert(u"PROBE_REPORT"_s, report);
    return "<key>ProgramArguments</key>" + list(QStringList{program} + arguments)
           + "<key>EnvironmentVariables</key>" + dictionary(variables);
}

QString unit() {
    return unitName(ServiceLocations::serviceLabel.toString());
}

QByteArray unitProperty(const QString& name) {
    return PrivateManager::systemctl({u"show"_s, u"--value"_s, u"--property="_s + name, unit()})
        .trimmed();
}

void ManagedCase::init() {
    qputenv("HOME", QFile::encodeName(home_.path()));
    launchctl_ = std::make_unique<Launchctl>(QStringLiteral(VESK_COMPANION));
    if (!manager_.isRunning() && !manager_.start()) {
        QSKIP(("NOT TESTED: this machine does not let a user's systemd start: " + manager_.log())
                  .constData());
    }
}

void ManagedCase::cleanup() {
    launchctl_.reset();
    // It writes into the home folder, and the folder's agent file would bring it back.
    static_cast<void>(PrivateManager::systemctl({u"stop"_s, unit()}));
    for (const auto& entry :
         std::filesystem::directory_iterator(QFile::encodeName(home_.path()).toStdString())) {
        std::filesystem::remove_all(entry.path());
    }
    forgetService();
}

void ManagedCase::putTemplate(const QByteArray& keys) const {
    write(locations().templateURL(), agentPropertyList(keys));
}

QString ManagedCase::report() const {
    return home_.filePath(u"report"_s);
}

QByteArrayList ManagedCase::fields() const {
    return content(report()).split('\0');
}

qsizetype ManagedCase::runs() const {
    return content(report() + u".runs"_s).count('\n');
}

ToolResult ManagedCase::launchctl(const QStringList& arguments) {
    std::optional<ToolResult> result;
    launchctl_->run(arguments, this, [&](const ToolResult& value) { result = value; });
    if (!QTest::qWaitFor([&] { return result.has_value(); }, patience)) {
        qFatal("no result came");
    }
    return *result;
}

std::optional<ServiceError> ManagedCase::failureOf(const QStringList& arguments) {
    const ToolResult result = launchctl(arguments);
    const auto* failure = std::get_if<ServiceError>(&result);
    return failure != nullptr ? std::optional(*failure) : std::nullopt;
}

std::optional<ServiceError> ManagedCase::start() {
    ServiceStart start(*launchctl_, locations());
    std::optional<std::optional<ServiceError>> end;
    start.startService([&](const std::optional<ServiceError>& failure) { end = failure; });
    if (!QTest::qWaitFor([&] { return end.has_value(); }, patience)) {
        qFatal("the start did not end");
    }
    return *end;
}

bool ManagedCase::isLoaded() {
    return std::holds_alternative<QString>(launchctl({u"print"_s, serviceTarget()}));
}

bool ManagedCase::isRunning() {
    const ToolResult result = launchctl({u"print"_s, serviceTarget()});
    const auto* text = std::get_if<QString>(&result);
    return text != nullptr && ListenerRecoveryPolicy::serviceReportsRunning(*text);
}

void ManagedCase::forgetService() {
    static_cast<void>(PrivateManager::systemctl({u"stop"_s, unit()}));
    removeServiceUnit(
        ServiceLocations::serviceLabel.toString(),
        qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/systemd/user"_s);
    static_cast<void>(PrivateManager::systemctl({u"daemon-reload"_s}));
    static_cast<void>(PrivateManager::systemctl({u"reset-failed"_s}));
}

} // namespace vesk

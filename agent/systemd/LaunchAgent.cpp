#include "agent/systemd/LaunchAgent.h"

#include "agent/PropertyList.h"
#include "agent/SmallFile.h"

#include <algorithm>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int invalidConfiguration = 78;

/// Takes typed values out of a dictionary and keeps the first complaint.
class AgentReader {
public:
    explicit AgentReader(QVariantMap values) : values_(std::move(values)) {}

    [[nodiscard]] const std::optional<ServiceError>& failure() const { return failure_; }

    void refuse(const QString& reason) {
        if (!failure_) {
            failure_ = serviceError(invalidConfiguration, reason);
        }
    }

    void mustBe(const QString& key, const QString& kind) {
        refuse(u"The launch agent's \"%1\" must be %2."_s.arg(key, kind));
    }

    [[nodiscard]] bool has(const QString& key) const { return values_.contains(key); }

    [[nodiscard]] QVariant value(const QString& key) const { return values_.value(key); }

    std::optional<QString> string(const QString& key) {
        return has(key) ? std::optional(text(key, value(key), u"a text"_s)) : std::nullopt;
    }

    std::optional<QString> path(const QString& key) {
        auto path = string(key);
        if (path && !path->startsWith(u'/')) {
            mustBe(key, u"an absolute path"_s);
        }
        return path;
    }

    bool boolean(const QString& key) {
        if (has(key) && value(key).typeId() != QMetaType::Bool) {
            mustBe(key, u"true or false"_s);
        }
        return value(key).toBool();
    }

    std::optional<qint64> integer(const QString& key, qint64 least, qint64 most) {
        if (!has(key)) {
            return std::nullopt;
        }
        const qint64 number = value(key).toLongLong();
        if (value(key).typeId() != QMetaType::LongLong || number < least || number > most) {
            mustBe(key, u"a whole number from %1 to %2"_s.arg(least).arg(most));
        }
        return number;
    }

    QStringList strings(const QString& key) {
        const auto kind = u"a list of texts"_s;
        if (has(key) && value(key).typeId() != QMetaType::QVariantList) {
            mustBe(key, kind);
        }
        QStringList texts;
        const QVariantList elements = value(key).toList();
        for (const QVariant& element : elements) {
            texts += text(key, element, kind);
        }
        return texts;
    }

    QMap<QString, QString> dictionary(const QString& key) {
        const auto kind = u"a dictionary of texts"_s;
        if (has(key) && value(key).typeId() != QMetaType::QVariantMap) {
            mustBe(key, kind);
        }
        QMap<QString, QString> texts;
        const QVariantMap elements = value(key).toMap();
        for (auto element = elements.begin(); element != elements.end(); ++element) {
            texts.insert(element.key(), text(key, element.value(), kind));
        }
        return texts;
    }

private:
    QString text(const QString& key, const QVariant& found, const QString& kind) {
        if (found.typeId() != QMetaType::QString) {
            mustBe(key, kind);
        }
        if (found.toString().contains(u'\0')) {
            refuse(u"The launch agent's \"%1\" contains a null character."_s.arg(key));
        }
        return found.toString();
    }

    QVariantMap values_;
    std::optional<ServiceError> failure_;
};

void readProgram(AgentReader& reader, LaunchAgent& agent) {
    const auto program = reader.string(u"Program"_s);
    agent.arguments = reader.strings(u"ProgramArguments"_s);
    if (!program && agent.arguments.isEmpty()) {
        reader.refuse(u"The launch agent names no program to run."_s);
        return;
    }
    agent.program = program.value_or(agent.arguments.value(0));
    if (!agent.program.startsWith(u'/')) {
        reader.mustBe(program ? u"Program"_s : u"ProgramArguments"_s, u"an absolute path"_s);
    }
    if (agent.arguments.isEmpty()) {
        agent.arguments = {agent.program};
    }
}

LaunchAgent::KeepAlive readKeepAlive(AgentReader& reader) {
    using KeepAlive = LaunchAgent::KeepAlive;
    const auto key = u"KeepAlive"_s;
    const QVariant value = reader.value(key);
    if (!reader.has(key)) {
        return KeepAlive::Never;
    }
    if (value.typeId() == QMetaType::Bool) {
        return value.toBool() ? KeepAlive::Always : KeepAlive::Never;
    }
    if (value.typeId() != QMetaType::QVariantMap) {
        reader.mustBe(key, u"true, false or a dictionary"_s);
    }
    const QVariantMap conditions = value.toMap();
    KeepAlive keepAlive = KeepAlive::Never;
    for (auto condition = conditions.begin(); condition != conditions.end(); ++condition) {
        if (condition.key() != u"SuccessfulExit" || condition.value().typeId() != QMetaType::Bool) {
            reader.refuse(u"The launch agent's \"KeepAlive\" has a condition that is not available "
                          "here: \"%1\"."_s.arg(condition.key()));
        }
        keepAlive = condition.value().toBool() ? KeepAlive::AfterSuccess : KeepAlive::AfterFailure;
    }
    return keepAlive;
}

/// A number, or a text in the notation of the C language.
std::optional<int> readUmask(AgentReader& reader) {
    const auto key = u"Umask"_s;
    constexpr int all = 0777;
    if (reader.value(key).typeId() != QMetaType::QString) {
        return reader.integer(key, 0, all);
    }
    bool isNumber = false;
    const int mask = reader.value(key).toString().toInt(&isNumber, 0);
    if (!isNumber || mask < 0 || mask > all) {
        reader.mustBe(key, u"a file mode mask"_s);
    }
    return mask;
}

/// Whether the service manager takes the variable as it stands.
bool isPassable(const QString& name, const QString& value) {
    const auto isLetter = [](QChar sign) {
        return (sign >= u'A' && sign <= u'Z') || (sign >= u'a' && sign <= u'z') || sign == u'_';
    };
    const auto isDigit = [](QChar sign) { return sign >= u'0' && sign <= u'9'; };
    const auto isControl = [](QChar sign) {
        return (sign < u' ' && sign != u'\t' && sign != u'\n') || sign == u'\x7f';
    };
    const auto isNoCharacter = [](char32_t point) { return QChar::isNonCharacter(point); };
    const auto points = value.toUcs4();
    return !name.isEmpty() && isLetter(name.front())
           && std::all_of(
               name.begin(), name.end(),
               [&](QChar sign) { return isLetter(sign) || isDigit(sign); })
           && std::none_of(value.begin(), value.end(), isControl)
           && std::none_of(points.begin(), points.end(), isNoCharacter);
}

void readEnvironment(AgentReader& reader, LaunchAgent& agent) {
    agent.environment = reader.dictionary(u"EnvironmentVariables"_s);
    for (auto entry = agent.environment.begin(); entry != agent.environment.end(); ++entry) {
        if (!isPassable(entry.key(), entry.value())) {
            reader.refuse(u"The launch agent's environment variable \"%1\" cannot be passed on "
                          "here."_s.arg(entry.key()));
        }
    }
}

} // namespace

std::variant<LaunchAgent, ServiceError> readLaunchAgent(const QVariant& propertyList) {
    AgentReader reader(propertyList.toMap());
    LaunchAgent agent;
    if (propertyList.typeId() != QMetaType::QVariantMap) {
        reader.refuse(u"The file is not a launch agent."_s);
    }
    agent.label = reader.string(u"Label"_s).value_or(QString());
    if (agent.label.isEmpty()) {
        reader.refuse(u"The launch agent has no \"Label\"."_s);
    }
    readProgram(reader, agent);
    readEnvironment(reader, agent);
    agent.workingDirectory = reader.path(u"WorkingDirectory"_s);
    agent.standardOutPath = reader.path(u"StandardOutPath"_s);
    agent.standardErrorPath = reader.path(u"StandardErrorPath"_s);
    agent.runAtLoad = reader.boolean(u"RunAtLoad"_s);
    agent.keepAlive = readKeepAlive(reader);
    if (const auto interval = reader.integer(u"ThrottleInterval"_s, 0, 1'000'000)) {
        agent.throttleInterval = std::chrono::seconds(*interval);
    }
    agent.nice = reader.integer(u"Nice"_s, -20, 19);
    agent.umask = readUmask(reader);
    if (reader.failure()) {
        return *reader.failure();
    }
    return agent;
}

std::variant<LaunchAgent, ServiceError> loadLaunchAgent(const QString& path) {
    const auto file = readSmallFile(path);
    if (const auto* failure = std::get_if<ServiceError>(&file)) {
        return *failure;
    }
    const auto parsed = readPropertyList(std::get<SmallFile>(file).bytes);
    if (const auto* failure = std::get_if<ServiceError>(&parsed)) {
        return *failure;
    }
    auto agent = readLaunchAgent(std::get<QVariant>(parsed));
    if (auto* read = std::get_if<LaunchAgent>(&agent)) {
        read->source = path;
    }
    return agent;
}

} // namespace vesk

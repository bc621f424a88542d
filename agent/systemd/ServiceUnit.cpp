#include "agent/systemd/ServiceUnit.h"

#include "agent/SmallFile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <sys/stat.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// systemd's longest unit name.
constexpr qsizetype longestName = 255;

/// How long a service may take to end before it is killed.
constexpr int stopSeconds = 20;

/// The ways to end that systemd counts as success and launchd does not.
constexpr auto politeSignals = "SIGHUP SIGINT SIGTERM SIGPIPE";

bool isControl(char sign) {
    return (sign >= 0 && sign < ' ') || sign == '\x7f';
}

QByteArray hex(char sign) {
    return "\\x" + QByteArray(1, sign).toHex();
}

/// systemd takes a line with a code point that is no character for broken, and leaves it out.
bool isText(const QByteArray& bytes) {
    const auto points = QString::fromUtf8(bytes).toUcs4();
    return std::none_of(
        points.begin(), points.end(), [](char32_t point) { return QChar::isNonCharacter(point); });
}

/// One word of a list in a unit file.
QByteArray word(const QByteArray& bytes) {
    const bool takenAsItStands = isText(bytes);
    const auto isAscii = [](char sign) { return sign >= 0; };
    QByteArray quoted;
    for (const char sign : bytes) {
        if (isControl(sign) || !(takenAsItStands || isAscii(sign))) {
            quoted += hex(sign);
        } else if (sign == '"' || sign == '\\') {
            quoted += '\\';
            quoted += sign;
        } else if (sign == '%') {
            quoted += "%%";
        } else {
            quoted += sign;
        }
    }
    return '"' + quoted + '"';
}

/// One argument in a command line, where variables would be replaced.
QByteArray argument(const QString& text) {
    return word(text.toUtf8().replace('$', "$$"));
}

bool isPlainExecutable(const QByteArray& path) {
    const auto isRefused = [](char sign) {
        return isControl(sign) || sign == '"' || sign == '\'' || sign == '\\';
    };
    // systemd 257 drops blanks at the end, although they are quoted.
    return isText(path) && std::none_of(path.begin(), path.end(), isRefused) && !path.endsWith(' ');
}

/// A path alone on its line has neither quotes nor escapes there, so systemd drops blanks at its
/// end and continues the line after a backslash. It refuses "..".
bool isPlainPath(const QByteArray& path) {
    return isText(path) && std::none_of(path.begin(), path.end(), isControl)
           && !path.split('/').contains("..") && !path.endsWith(' ') && !path.endsWith('\\');
}

class Translation {
public:
    Translation(const LaunchAgent& agent, QString linkFolder)
        : agent_(agent), linkFolder_(std::move(linkFolder)) {}

    ServiceUnit unit() {
        unit_.text = "[Unit]\n";
        if (!agent_.source.isEmpty()) {
            set("SourcePath", path(u"source"_s, agent_.source));
        }
        // However often it ends: the wait between two runs is all that holds it back.
        set("StartLimitIntervalSec", "0");
        unit_.text += "\n[Service]\n";
        // Started is what was really executed.
        set("Type", "exec");
        command();
        surroundings();
        streams();
        restart();
        return unit_;
    }

private:
    void set(const QByteArray& key, const QByteArray& value) {
        unit_.text += key + '=' + value + '\n';
    }

    QByteArray linked(const QString& name, const QString& target) {
        unit_.links.insert(name, target);
        return QFile::encodeName(linkFolder_ + u'/' + name);
    }

    QByteArray path(const QString& name, const QString& target) {
        QByteArray bytes = QFile::encodeName(target);
        if (!isPlainPath(bytes)) {
            bytes = linked(name, target);
        }
        return bytes.replace('%', "%%");
    }

    void command() {
        QByteArray program = QFile::encodeName(agent_.program);
        if (!isPlainExecutable(program)) {
            program = linked(u"program"_s, agent_.program);
        }
        QByteArray line = word('@' + program);
        for (const QString& text : agent_.arguments) {
            line += ' ' + argument(text);
        }
        set("ExecStart", line);
    }

    void surroundings() {
        for (auto entry = agent_.environment.begin(); entry != agent_.environment.end(); ++entry) {
            set("Environment", word((entry.key() + u'=' + entry.value()).toUtf8()));
        }
        if (agent_.workingDirectory) {
            set("WorkingDirectory", path(u"directory"_s, *agent_.workingDirectory));
        }
        if (agent_.nice) {
            set("Nice", QByteArray::number(*agent_.nice));
        }
        if (agent_.umask) {
            set("UMask", QByteArray::number(*agent_.umask, 8).rightJustified(4, '0'));
        }
    }

    void streams() {
        if (agent_.standardOutPath) {
            set("StandardOutput", "append:" + path(u"output"_s, *agent_.standardOutPath));
        }
        if (agent_.standardErrorPath) {
            set("StandardError", "append:" + path(u"error"_s, *agent_.standardErrorPath));
        } else {
            // Otherwise it would go where the output goes.
            set("StandardError", "journal");
        }
    }

    void restart() {
        set("TimeoutStopSec", QByteArray::number(stopSeconds));
        if (agent_.keepAlive == LaunchAgent::KeepAlive::Never) {
            return;
        }
        set("RestartSec", QByteArray::number(qint64(agent_.throttleInterval.count())));
        switch (agent_.keepAlive) {
        case LaunchAgent::KeepAlive::Always:
            set("Restart", "always");
            break;
        case LaunchAgent::KeepAlive::AfterFailure:
            set("Restart", "on-failure");
            set("RestartForceExitStatus", politeSignals);
            break;
        case LaunchAgent::KeepAlive::AfterSuccess:
            set("Restart", "on-success");
            set("RestartPreventExitStatus", politeSignals);
            break;
        case LaunchAgent::KeepAlive::Never:
            break;
        }
    }

    const LaunchAgent& agent_;
    QString linkFolder_;
    ServiceUnit unit_;
};

QString linkFolder(const QString& label, const QString& folder) {
    return folder + u'/' + unitName(label) + u".paths"_s;
}

std::filesystem::path nativePath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

} // namespace

QString unitName(const QString& label) {
    QByteArray name = "launch-agent-";
    const QByteArray bytes = label.toUtf8();
    for (const char sign : bytes) {
        const bool isPlain = (sign >= 'a' && sign <= 'z') || (sign >= 'A' && sign <= 'Z')
                             || (sign >= '0' && sign <= '9') || sign == '-' || sign == '_'
                             || sign == '.';
        name += isPlain ? QByteArray(1, sign) : hex(sign);
    }
    return QString::fromLatin1(name + ".service");
}

ServiceUnit serviceUnit(const LaunchAgent& agent, const QString& linkFolder) {
    return Translation(agent, linkFolder).unit();
}

std::optional<ServiceError> installServiceUnit(const LaunchAgent& agent, const QString& folder) {
    const QString name = unitName(agent.label);
    if (name.size() > longestName) {
        return serviceError(78, u"The launch agent's \"Label\" is too long."_s);
    }
    const QString links = linkFolder(agent.label, folder);
    const ServiceUnit unit = serviceUnit(agent, links);
    removeServiceUnit(agent.label, folder);
    std::error_code error;
    std::filesystem::create_directories(nativePath(folder), error);
    if (!unit.links.isEmpty() && !error && mkdir(nativePath(links).c_str(), 0700) != 0) {
        error.assign(errno, std::generic_category());
    }
    for (auto link = unit.links.begin(); link != unit.links.end() && !error; ++link) {
        std::filesystem::create_symlink(
            nativePath(link.value()), nativePath(links + u'/' + link.key()), error);
    }
    auto failure = error
                       ? systemError(error.value(), u"\"%1\" could not be written to"_s.arg(folder))
                       : replaceFile(folder + u'/' + name, {unit.text, Readers::Owner});
    if (failure) {
        removeServiceUnit(agent.label, folder);
    }
    return failure;
}

void removeServiceUnit(const QString& label, const QString& folder) {
    std::error_code ignored;
    std::filesystem::remove(nativePath(folder + u'/' + unitName(label)), ignored);
    std::filesystem::remove_all(nativePath(linkFolder(label, folder)), ignored);
}

} // namespace vesk

#include "tests/fuzz/UnitReader.h"

#include "tests/fuzz/Fuzz.h"

#include <QFile>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vesk {

namespace {

using Settings = std::multimap<std::string, std::string>;

constexpr std::string_view blanks = " \t\n\r";

const QString linkFolder = QStringLiteral("/run/links");

std::string stripped(const std::string& text) {
    const auto begin = text.find_first_not_of(blanks);
    return begin == std::string::npos
               ? std::string()
               : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/// Line feeds, carriage returns and nulls end a line.
std::vector<std::string> physicalLines(const std::string& text) {
    std::vector<std::string> lines(1);
    for (const char sign : text) {
        if (sign == '\n' || sign == '\r' || sign == '\0') {
            lines.emplace_back();
        } else {
            lines.back() += sign;
        }
    }
    return lines;
}

/// Characters that are none are taken for broken UTF-8.
bool isClean(const std::string& line) {
    const auto points = QString::fromUtf8(QByteArray::fromStdString(line)).toUcs4();
    return std::none_of(
        points.begin(), points.end(), [](uint point) { return QChar::isNonCharacter(point); });
}

/// "section/key" to value. A back-slash at the end goes on with the next line.
Settings settingsIn(const std::string& text) {
    Settings settings;
    std::string section;
    std::string line;
    for (const std::string& part : physicalLines(text)) {
        line += part;
        if (!line.empty() && line.back() == '\\') {
            line.back() = ' ';
            continue;
        }
        const std::string whole = stripped(std::exchange(line, std::string()));
        if (whole.empty() || whole.front() == '#' || whole.front() == ';') {
            continue;
        }
        if (whole.front() == '[') {
            section = whole;
            continue;
        }
        const auto equals = whole.find('=');
        require(equals != std::string::npos, "a line of a unit is a setting");
        require(isClean(whole), "a line of a unit is clean");
        settings.emplace(
            section + stripped(whole.substr(0, equals)), stripped(whole.substr(equals + 1)));
    }
    require(line.empty(), "a unit does not end in the middle of a line");
    return settings;
}

int hexDigit(char sign) {
    const auto place = std::string_view("0123456789abcdef").find(sign);
    return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

/// The words of a list: quotes are taken off, escapes in them and outside are undone.
std::vector<std::string> wordsIn(const std::string& value) {
    std::vector<std::string> words;
    std::size_t at = 0;
    const auto next = [&] {
        require(at < value.size(), "a word is complete");
        return value[at++];
    };
    while ((at = value.find_first_not_of(blanks, at)) != std::string::npos) {
        std::string word;
        char quote = '\0';
        while (at < value.size() && (quote != '\0' || blanks.find(value[at]) == blanks.npos)) {
            const char sign = next();
            if (quote == '\0' && (sign == '"' || sign == '\'')) {
                quote = sign;
            } else if (quote != '\0' && sign == quote) {
                quote = '\0';
            } else if (sign != '\\') {
                word += sign;
            } else if (const char escaped = next(); escaped == 'x') {
                const int high = hexDigit(next());
                const int low = hexDigit(next());
                require(high >= 0 && low >= 0 && high + low > 0, "an escape is a character");
                word += static_cast<char>(high * 16 + low);
            } else {
                require(escaped == '"' || escaped == '\'' || escaped == '\\', "an escape is known");
                word += escaped;
            }
        }
        require(quote == '\0', "a quote is closed");
        words.push_back(word);
    }
    return words;
}

/// What two of `sign` stand for; a single one would be replaced by something else.
std::string undoubled(const std::string& text, char sign) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == sign) {
            ++at;
            require(at < text.size() && text[at] == sign, "nothing is left to be replaced");
        }
        result += text[at];
    }
    return result;
}

/// Without doubled slashes, steps that stay, and a slash at the end.
std::string simplified(const std::string& path) {
    std::string result;
    std::size_t at = 0;
    while (at < path.size()) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        const std::string name = path.substr(at, end - at);
        if (!name.empty() && name != ".") {
            result += '/' + name;
        }
        at = end + 1;
    }
    return result.empty() ? "/" : result;
}

std::string bytesOf(const QString& text) {
    return text.toUtf8().toStdString();
}

class UnitReader {
public:
    explicit UnitReader(const LaunchAgent& agent)
        : agent_(agent),
          unit_(serviceUnit(agent, linkFolder)),
          settings_(settingsIn(unit_.text.toStdString())) {}

    void check() {
        checkCommand();
        checkVariables();
        checkPlaces();
        checkNumbers();
        checkRestart();
        require(take("[Service]Type") == "exec", "the unit is started when it was executed");
        require(take("[Unit]StartLimitIntervalSec") == "0", "the unit is never given up");
        require(take("[Service]TimeoutStopSec") == "20", "the unit is killed in time");
        require(settings_.empty(), "a unit has no other settings");
        require(links_.size() == std::size_t(unit_.links.size()), "each link is used");
    }

private:
    /// The value of a setting that is there once at most.
    std::optional<std::string> take(const std::string& key) {
        const auto found = settings_.find(key);
        if (found == settings_.end()) {
            return std::nullopt;
        }
        require(settings_.count(key) == 1, "a setting is there once");
        auto value = std::move(found->second);
        settings_.erase(found);
        return value;
    }

    /// What is really meant by a path that may lead over one of the unit's links.
    std::string reached(const std::string& path) {
        const std::string folder = bytesOf(linkFolder) + '/';
        const QString name =
            path.starts_with(folder)
                ? QString::fromUtf8(QByteArray::fromStdString(path.substr(folder.size())))
                : QString();
        if (!unit_.links.contains(name)) {
            return path;
        }
        links_.insert(bytesOf(name));
        return bytesOf(unit_.links.value(name));
    }

    void checkCommand() {
        auto words = wordsIn(take("[Service]ExecStart").value_or(std::string()));
        require(!words.empty() && words.front().starts_with('@'), "a program is named");
        const std::string path = undoubled(words.front().substr(1), '%');
        require(
            path.find_first_of("\"'\\") == std::string::npos, "the path has no refused character");
        require(
            simplified(reached(path)) == simplified(bytesOf(agent_.program)),
            "the program is the agent's");
        words.erase(words.begin());
        require(words.size() == std::size_t(agent_.arguments.size()), "no argument comes or goes");
        for (std::size_t at = 0; at < words.size(); ++at) {
            require(
                undoubled(undoubled(words[at], '%'), '$')
                    == bytesOf(agent_.arguments.at(static_cast<qsizetype>(at))),
                "an argument is the agent's");
        }
    }

    void checkVariables() {
        std::map<std::string, std::string> found;
        const auto [begin, end] = settings_.equal_range("[Service]Environment");
        for (auto setting = begin; setting != end; ++setting) {
            const auto words = wordsIn(setting->second);
            require(words.size() == 1, "a variable is one word");
            const std::string word = undoubled(words.front(), '%');
            const auto equals = word.find('=');
            require(equals != std::string::npos, "a variable has a value");
            require(
                found.emplace(word.substr(0, equals), word.substr(equals + 1)).second,
                "a variable is set once");
        }
        for (const auto& [name, value] : found) {
            require(isClean(value), "a variable is clean");
        }
        settings_.erase(begin, end);
        std::map<std::string, std::string> wanted;
        for (auto entry = agent_.environment.begin(); entry != agent_.environment.end(); ++entry) {
            wanted.emplace(bytesOf(entry.key()), bytesOf(entry.value()));
        }
        require(found == wanted, "the variables are the agent's");
    }

    void checkPlace(
        const std::string& key, const std::optional<QString>& place,
        const std::string& prefix = {}) {
        const auto value = take(key);
        require(value.has_value() == place.has_value(), "a place is set where the agent has one");
        if (value) {
            require(value->starts_with(prefix), "a log file is appended to");
            require(
                simplified(reached(simplified(undoubled(value->substr(prefix.size()), '%'))))
                    == simplified(bytesOf(*place)),
                "a place is the agent's");
        }
    }

    void checkPlaces() {
        checkPlace(
            "[Unit]SourcePath",
            agent_.source.isEmpty() ? std::nullopt : std::optional(agent_.source));
        checkPlace("[Service]WorkingDirectory", agent_.workingDirectory);
        checkPlace("[Service]StandardOutput", agent_.standardOutPath, "append:");
        if (agent_.standardErrorPath) {
            checkPlace("[Service]StandardError", agent_.standardErrorPath, "append:");
        } else {
            require(take("[Service]StandardError") == "journal", "errors go to the journal");
        }
    }

    void checkNumbers() {
        const auto nice = take("[Service]Nice");
        require(
            nice == (agent_.nice ? std::optional(std::to_string(*agent_.nice)) : std::nullopt),
            "the niceness is the agent's");
        const auto mask = take("[Service]UMask");
        require(mask.has_value() == agent_.umask.has_value(), "the mask is set where there is one");
        require(!mask || std::stoi(*mask, nullptr, 8) == *agent_.umask, "the mask is the agent's");
    }

    void checkRestart() {
        using KeepAlive = LaunchAgent::KeepAlive;
        static const std::map<KeepAlive, std::string> restarts{
            {KeepAlive::Always, "always"},
            {KeepAlive::AfterFailure, "on-failure"},
            {KeepAlive::AfterSuccess, "on-success"}};
        const auto restart = take("[Service]Restart");
        const auto wait = take("[Service]RestartSec");
        const bool forced = take("[Service]RestartForceExitStatus").has_value();
        const bool prevented = take("[Service]RestartPreventExitStatus").has_value();
        require(forced == (agent_.keepAlive == KeepAlive::AfterFailure), "signals are failures");
        require(prevented == (agent_.keepAlive == KeepAlive::AfterSuccess), "signals are no ends");
        if (agent_.keepAlive == KeepAlive::Never) {
            require(!restart && !wait, "nothing is restarted that is not kept alive");
            return;
        }
        require(restart == restarts.at(agent_.keepAlive), "it is restarted when it is to be");
        require(wait == std::to_string(agent_.throttleInterval.count()), "the wait is the agent's");
    }

    const LaunchAgent& agent_;
    ServiceUnit unit_;
    Settings settings_;
    std::set<std::string> links_;
};

} // namespace

void requireSameAgent(const LaunchAgent& agent) {
    UnitReader(agent).check();
}

} // namespace vesk

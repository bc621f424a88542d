#pragma once

#include <QStringList>

namespace vesk {

/// The arguments as the process got them, the program first: read before Qt sees any.
class CommandLine {
public:
    /// What the program is started for.
    enum class Request { Open, Start, Settings, Setup, Quit, SelfTest, Help, Version };

    CommandLine(int argc, const char* const* argv);

    [[nodiscard]] const QStringList& arguments() const noexcept { return arguments_; }

    /// The request of the switch among the arguments; Open without any. Of several switches
    /// --self-test counts first, then --help, --version, --quit, --setup, --settings, --start.
    /// Everything else is ignored.
    [[nodiscard]] Request request() const;

    /// Whether the first argument after the program is neither a switch nor a port.
    [[nodiscard]] bool firstIsNoPort() const;

private:
    QStringList arguments_;
};

/// The lines that --help prints.
[[nodiscard]] QString helpText();

/// The line that --version prints.
[[nodiscard]] QString versionText();

} // namespace vesk

#pragma once

#include <QStringList>

namespace vesk {

/// The arguments as the process got them, the program first: read before the toolkit sees any.
class CommandLine {
public:
    CommandLine(int argc, const char* const* argv);

    [[nodiscard]] const QStringList& arguments() const noexcept { return arguments_; }

    /// "--self-test" is among them, as a whole.
    [[nodiscard]] bool selfTest() const;

    /// "--setup" is among them, as a whole.
    [[nodiscard]] bool setup() const;

private:
    QStringList arguments_;
};

} // namespace vesk

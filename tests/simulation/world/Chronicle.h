#pragma once

#include <QString>

#include <array>

namespace vesk {

/// What happened, line by line, with the virtual time of each; the way back to it when something
/// that must hold does not.
class Chronicle {
public:
    /// What names this run to whoever wants to see it again.
    struct Run {
        quint64 seed = 0;
        double hours = 0;
    };

    Chronicle(Run run, bool trace) : run_(run), trace_(trace) {}
    Chronicle(const Chronicle&) = delete;
    Chronicle& operator=(const Chronicle&) = delete;

    /// One event: who, and what.
    void note(QStringView who, const QString& what);

    [[nodiscard]] quint64 events() const noexcept { return events_; }

    /// Hours since the beginning.
    [[nodiscard]] double hours() const;

    /// Tells of a broken rule, of what went before and of how to see it again, and ends the
    /// program.
    [[noreturn]] void fail(const char* rule, const QString& complaint);

    /// The same on the way down after a crash.
    void tellOfCrash(const char* what);

private:
    static constexpr std::size_t kept = 50;

    void tell(const char* rule, const QByteArray& complaint) const;

    Run run_;
    bool trace_;
    quint64 events_ = 0;
    std::array<QByteArray, kept> last_;
};

} // namespace vesk

#include "Chronicle.h"

#include "tests/simulation/VirtualTime.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace vesk {

using namespace std::chrono_literals;

namespace {

/// Where virtual time begins.
constexpr TimePoint beginning{1h};

QByteArray clockText() {
    const auto past = VirtualTime::instance().now() - beginning;
    const auto total = std::chrono::duration_cast<std::chrono::milliseconds>(past).count();
    char text[32];
    std::snprintf(
        text, sizeof text, "%5lld:%02lld:%02lld.%03lld", total / 3'600'000LL, total / 60'000LL % 60,
        total / 1000LL % 60, total % 1000LL);
    return text;
}

} // namespace

void Chronicle::note(QStringView who, const QString& what) {
    QByteArray& line = last_.at(events_ % kept);
    line = clockText() + "  " + who.toUtf8().leftJustified(8) + ' ' + what.toUtf8();
    line.replace('\n', ' ');
    ++events_;
    if (trace_) {
        std::puts(line.constData());
    }
}

double Chronicle::hours() const {
    return std::chrono::duration<double, std::ratio<3600>>(
               VirtualTime::instance().now() - beginning)
        .count();
}

void Chronicle::fail(const char* rule, const QString& complaint) {
    tell(rule, complaint.toUtf8());
    std::fflush(stdout);
    std::_Exit(EXIT_FAILURE);
}

void Chronicle::tellOfCrash(const char* what) {
    tell("The program does not crash.", what);
    std::fflush(stdout);
}

void Chronicle::tell(const char* rule, const QByteArray& complaint) const {
    if (!trace_) {
        for (quint64 at = events_ - std::min<quint64>(events_, kept); at < events_; ++at) {
            std::puts(last_.at(at % kept).constData());
        }
    }
    std::printf(
        "\nBROKEN at %s: %s\n%s\n", clockText().trimmed().constData(), rule, complaint.constData());
    std::printf(
        "See it again: vesk-simulate --seed %llu --hours %g --trace\n", run_.seed, run_.hours);
}

} // namespace vesk

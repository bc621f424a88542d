#include "tools/bench/Trial.h"

#include "tools/bench/Figures.h"

#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <tuple>

namespace vesk::bench {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

/// Long enough for all that an answer sets off, and shorter than any interval.
constexpr auto aftermath = 500ms;
/// The same for what a start and a hidden window set off.
constexpr auto settling = 5s;

std::vector<std::string> command(Kind kind, in_port_t port, const Situation& situation) {
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    if (kind == Kind::Ours) {
        return {folder / "VeskWorkerControl", std::to_string(port)};
    }
    return {
        folder / "vesk-bench-bare", std::to_string(port),
        std::to_string(situation.interval.count())};
}

std::filesystem::path home(Kind kind, int place) {
    const char* own = std::getenv("HOME");
    if (own == nullptr) {
        throw std::runtime_error("HOME is not set");
    }
    return std::filesystem::path(own) / (kind == Kind::Ours ? "ours" : "bare")
           / std::to_string(place);
}

} // namespace

Trial::Trial(Screen& screen, Kind kind, const Situation& situation, int place)
    : situation_(situation),
      peer_(situation.document),
      program_(command(kind, peer_.port(), situation), home(kind, place)),
      shown_(screen.awaitWindow(program_.pid())) {
    // A program that is still showing its window would bring it back.
    std::ignore = screen.longestAnswer(shown_.window, 1ms);
    if (situation.hidden) {
        if (situation.document != Document::None) {
            peer_.awaitFetches(1, 5s);
        }
        screen.minimise(shown_.window);
    } else {
        screen.place(shown_, place);
    }
}

double Trial::cpuPerFetch(int fetches) const {
    // Both ends lie at the same distance from an answer. After a start several requests may come
    // at once; a window that has just been hidden begins a new interval.
    if (situation_.hidden) {
        std::this_thread::sleep_for(settling);
    } else {
        peer_.awaitFetches(peer_.fetches() + 2, 4 * situation_.interval);
        std::this_thread::sleep_for(aftermath);
    }
    const int before = peer_.fetches();
    const auto began = steady_clock::now();
    const auto used = cpuTimeOf(pid());
    peer_.awaitFetches(before + fetches, fetches * situation_.interval * 3 / 2);
    if (steady_clock::now() - began < (fetches - 1) * situation_.interval * 9 / 10) {
        throw std::runtime_error("a program asked more often than it should");
    }
    std::this_thread::sleep_for(aftermath);
    return Milliseconds(cpuTimeOf(pid()) - used).count() / fetches;
}

double Trial::cpuPerMinute(std::chrono::seconds duration) const {
    const auto used = cpuTimeOf(pid());
    std::this_thread::sleep_for(duration);
    return Milliseconds(cpuTimeOf(pid()) - used).count()
           * (1min / std::chrono::duration<double>(duration));
}

} // namespace vesk::bench

#include "tests/mutation/Sites.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace vesk;

struct Source {
    std::string path;
    std::string text;
    std::vector<Site> sites;
};

/// On one line, as a field of a table.
std::string shortened(std::string_view text) {
    std::string line;
    for (const char sign : text) {
        const bool isBlank = sign == ' ' || sign == '\n' || sign == '\t';
        if (!isBlank || (!line.empty() && line.back() != ' ')) {
            line += isBlank ? ' ' : sign;
        }
    }
    return line;
}

void print(const Source& source, const Site& site, const std::string& replacement) {
    const auto begin = source.text.begin();
    const auto line = 1 + std::count(begin, begin + static_cast<std::ptrdiff_t>(site.begin), '\n');
    std::printf(
        "%s:%td\t%s\t%s\t%s\n", source.path.c_str(), line, std::string(nameOf(site.kind)).c_str(),
        shortened(std::string_view(source.text).substr(site.begin, site.length)).c_str(),
        shortened(replacement).c_str());
}

std::optional<Source> read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file) {
        return std::nullopt;
    }
    Source source{path, text.str(), {}};
    source.sites = sitesIn(source.text);
    return source;
}

void list(const std::vector<Source>& sources) {
    for (const Source& source : sources) {
        for (const Site& site : source.sites) {
            for (const std::string& replacement : site.replacements) {
                print(source, site, replacement);
            }
        }
    }
}

/// Each site is as likely as any other.
bool breakOne(const std::vector<Source>& sources, std::uint64_t seed) {
    std::size_t count = 0;
    for (const Source& source : sources) {
        count += source.sites.size();
    }
    if (count == 0) {
        return false;
    }
    std::mt19937_64 random(seed);
    std::size_t drawn = random() % count;
    auto source = sources.begin();
    while (drawn >= source->sites.size()) {
        drawn -= source->sites.size();
        ++source;
    }
    const Site& site = source->sites[drawn];
    const std::string& replacement = site.replacements[random() % site.replacements.size()];
    std::string broken = source->text;
    broken.replace(site.begin, site.length, replacement);
    std::ofstream file(source->path, std::ios::binary | std::ios::trunc);
    file << broken;
    file.close();
    print(*source, site, replacement);
    return static_cast<bool>(file);
}

int usage() {
    std::fputs(
        "Usage: vesk-mutate --list FILE...\n"
        "       vesk-mutate --seed NUMBER FILE...\n"
        "Breaks one of the sources in one place, or lists all that it could do.\n",
        stderr);
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char* argv[]) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool lists = !arguments.empty() && arguments[0] == "--list";
    const std::size_t options = lists ? 1 : 2;
    std::uint64_t seed = 0;
    if (!lists) {
        if (arguments.size() < options || arguments[0] != "--seed") {
            return usage();
        }
        const std::string& number = arguments[1];
        const auto [end, error] =
            std::from_chars(number.data(), number.data() + number.size(), seed);
        if (error != std::errc() || end != number.data() + number.size()) {
            return usage();
        }
    }
    std::vector<Source> sources;
    for (std::size_t at = options; at < arguments.size(); ++at) {
        auto source = read(arguments[at]);
        if (!source) {
            std::fprintf(stderr, "%s cannot be read\n", arguments[at].c_str());
            return EXIT_FAILURE;
        }
        sources.push_back(*std::move(source));
    }
    if (lists) {
        list(sources);
        return EXIT_SUCCESS;
    }
    return breakOne(sources, seed) ? EXIT_SUCCESS : EXIT_FAILURE;
}

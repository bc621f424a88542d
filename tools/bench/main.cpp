#include "tools/bench/Measures.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <span>
#include <string_view>

namespace {

using namespace vesk::bench;

void run(const std::filesystem::path& folder, const std::string& part, const char* minutes) {
    Screen screen;
    if (part == "soak") {
        soak(screen, std::chrono::minutes(std::atoi(minutes)), folder / "soak.json");
        return;
    }
    Table table;
    const bool all = part == "all";
    if (all || part == "start") {
        measureStart(screen, table);
    }
    if (all || part == "memory") {
        measureMemory(screen, table);
    }
    if (all || part == "cpu") {
        measureCpu(screen, table);
    }
    if (all || part == "scale") {
        measureScale(screen, table);
    }
    table.write(folder / (part + ".json"));
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 4) {
        std::cerr << "usage: vesk-bench FOLDER all|start|memory|cpu|scale|soak MINUTES\n";
        return 2;
    }
    try {
        run(argv[1], argv[2], argv[3]);
    } catch (const std::exception& error) {
        std::cerr << "vesk-bench: " << error.what() << '\n';
        return 1;
    }
    return 0;
}

#pragma once

#include "tools/bench/Screen.h"
#include "tools/bench/Table.h"

#include <chrono>

namespace vesk::bench {

/// Each adds its rows to the table.
void measureStart(Screen& screen, Table& table);
void measureMemory(Screen& screen, Table& table);
void measureCpu(Screen& screen, Table& table);
void measureScale(Screen& screen, Table& table);

/// Prints what both programs hold minute by minute, and writes it down as JSON.
void soak(Screen& screen, std::chrono::minutes duration, const std::filesystem::path& file);

} // namespace vesk::bench

#pragma once

#include "agent/systemd/ServiceUnit.h"

namespace vesk {

/// Reads a unit back by the rules of systemd.syntax(7), systemd.unit(5) and systemd.exec(5),
/// written from those and from nothing of ours, and requires that it means what `agent` asks for:
/// the same program, arguments, variables, places and numbers, and no word more.
void requireSameAgent(const LaunchAgent& agent);

} // namespace vesk

#pragma once

namespace vesk {

/// Checks the presentation and the policies without a display. Prints one line to standard output
/// and returns 0, or 1 where that line could not be written; a failed check ends the process with a
/// line on standard error and status 1.
[[nodiscard]] int runSelfTest();

} // namespace vesk

#pragma once

#include <QApplication>

#include <memory>

namespace vesk {

/// Constructs the application, which connects it to the display. Where Qt has no platform plugin
/// that can do so, one line on standard error shows the environment variables that decide on the
/// display, and the process ends with status 1. A display that is lost later is reported by one
/// line too. `argc` and `argv` are those of QApplication's constructor.
[[nodiscard]] std::unique_ptr<QApplication> openDisplay(int& argc, char** argv);

} // namespace vesk

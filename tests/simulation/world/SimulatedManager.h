#pragma once

#include "tests/simulation/SimulatedTool.h"
#include "tests/simulation/world/Chronicle.h"
#include "tests/simulation/world/Dice.h"
#include "tests/simulation/world/SimulatedService.h"

#include <QObject>

namespace vesk {

/// The service manager behind its tool: it knows the service or not, and is quick, slow, fails in
/// its own words or never comes back.
class SimulatedManager final : public QObject {
    Q_OBJECT

public:
    SimulatedManager(
        SimulatedTool& tool, SimulatedService& service, Dice& dice, Chronicle& chronicle);

    void setFaults(bool faults) { faults_ = faults; }

signals:
    /// Before the controller gets it.
    void ending(std::size_t number, const vesk::ToolResult& result);

private:
    void take(std::size_t number, const SimulatedTool::Run& run);
    void end(std::size_t number, const QString& verb);
    [[nodiscard]] ToolResult resultOf(const QString& verb);

    SimulatedTool& tool_;
    SimulatedService& service_;
    Dice& dice_;
    Chronicle& chronicle_;
    bool faults_ = true;
    bool knowsService_ = true;
};

} // namespace vesk

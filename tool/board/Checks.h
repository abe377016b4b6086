// What the tool checks before it sends anything to the board.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "gputune.h"
#include "tool/values/Errors.h"
#include "tool/values/Names.h"

namespace gputune::tool {

// Throws ToolError when `value` is outside minimum to maximum, both allowed.
void CheckRange(std::string const& what, int value, int minimum, int maximum, Unit unit);

// ---- Fan ----

// Throws ToolError when the board has no curve or a point is outside its range, UsageError when the number of points is
// not the board's. Intel fans report neither ranges nor a number of points; their driver checks the curve.
void CheckCurve(std::vector<FanTablePoint> const& curve, FanSetting const& setting, std::uint32_t api);
UsageError WrongPointCount(int expected, std::size_t given);
// Throws ToolError when a fixed speed is outside the range of the curve's first point, which is valid for it. Does
// nothing when the board reports no range.
void CheckFanSpeed(int percent, FanSetting const& setting);

// ---- Power limit ----

// A board without a power limit reports a range of 0 to 0.
bool IsAdjustable(PowerLimitSetting const& setting);
// Throws ToolError when the limit is outside the board's range, UnsupportedError when it has none. Does nothing when
// the board reports no range.
void CheckPowerLimit(int percent, PowerLimitSetting const& setting);

// ---- Clocks ----

// What the user asks for, in MHz and mV. Both nothing and 0 keep the current value.
struct ClockRequest {
    std::optional<int> gpuClock{};
    std::optional<int> gpuVoltage{};
    std::optional<int> memClock{};
    std::optional<int> memVoltage{};
};

// The arguments of SetPerformanceUser.
struct ClockCommand {
    int gpuClock;
    int gpuVoltage;
    int memClock;
    int memVoltage;
    bool inEffect;  // the board runs at these clocks already, in which case the Overdrive8 backend returns false
};

// Throws UsageError for a request that no board of this interface takes, ToolError for a value outside the board's
// ranges.
ClockCommand PlanClocks(std::uint32_t api, ClockRequest const& request, ClockSetting const& gpu,
                        ClockSetting const& memory);

}  // namespace gputune::tool

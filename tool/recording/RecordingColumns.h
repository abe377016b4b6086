// The headings of a recording, for its writer and its reader.
#pragma once

#include <string>

#include "tool/values/Names.h"

namespace gputune::tool {

constexpr char const* timeColumn = "time";
constexpr char const* fanUnsureColumn = "fan_speed_unsure";
constexpr char const* adapterColumn = "adapter_name";
constexpr char const* fanCurveColumn = "fan_curve";

// "gpu_core_clock_mhz".
inline std::string ColumnName(char const* code, Unit unit) {
    return std::string(code) + "_" + UnitName(unit).code;
}

}  // namespace gputune::tool

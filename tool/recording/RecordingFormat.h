// Recordings: the sensors over time, as comma-separated values that `record` and `monitor --csv` write and `report`
// reads.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "gputune.h"
#include "tool/values/Names.h"
#include "tool/values/Readings.h"

namespace gputune::tool {

// The headings of the columns.
constexpr char const* kTimeColumn = "time";
constexpr char const* kFanUnsureColumn = "fan_speed_unsure";
constexpr char const* kAdapterColumn = "adapter_name";
constexpr char const* kFanCurveColumn = "fan_curve";

// Those of sensors name the unit: "gpu_core_clock_mhz".
std::string ColumnName(char const* code, Unit unit);

// What a recording says of the board beside its readings.
struct RecordedBoard {
    std::uint32_t vendor = 0;
    bool frameRate = false;  // whether the frame rate is read, too
    std::string name;
    std::vector<FanTablePoint> fanCurve;  // empty: none that could be read
    bool fanCanBeUnsure = false;          // whether a reading of the fan can be (StuckFanWatch)
};

// Lines without line ends: the time, a column for every sensor (empty where not available), the frame rate if it is
// read, why the fan's speed is unsure where it can be, the board's name and its fan curve. Name and curve stand in the
// first line only.
class RecordingFormat {
public:
    explicit RecordingFormat(RecordedBoard board) : board_(std::move(board)) {}

    std::string Heading() const;
    std::string Line(std::string const& time, Readings const& readings, std::optional<int> frameRate);

private:
    RecordedBoard board_;
    bool isFirst_ = true;
};

}  // namespace gputune::tool

// Recordings: the sensors over time, as comma-separated values that `record` and `monitor --csv` write and `report`
// reads. Independent of the operating system.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gputune.h"
#include "tool/recording/Csv.h"
#include "tool/values/Readings.h"

namespace gputune::tool {

// ---- Writing ----

// What is known of a board before its first reading.
struct RecordedBoard {
    std::uint32_t vendor = 0;
    bool frameRate = false;  // whether the frame rate is read, too
    std::string name;
    std::vector<FanTablePoint> fanCurve;  // empty: none that could be read
    bool canDoubtFan = false;             // whether a reading of the fan can be unsure (StuckFanWatch)
};

// The curve in effect; empty when the board has none, or a point of it is not known.
std::vector<FanTablePoint> FanCurveOf(FanSetting const& setting);

// Lines without line ends: the time, a column for every sensor (empty where not available), the frame rate if it is
// read, why the fan's speed is unsure where it can be, the board's name and its fan curve. Name and curve stand in the
// first line only.
class RecordingFormat {
public:
    explicit RecordingFormat(RecordedBoard board) : board_(std::move(board)) {}

    // Names sensor and unit: "gpu_core_clock_mhz".
    std::string Heading() const;
    std::string Line(std::string const& time, Readings const& readings, std::optional<int> frameRate);

private:
    RecordedBoard board_;
    bool isFirst_ = true;
};

// ---- Reading ----

struct Series {
    std::string code;  // without its unit
    std::string title;
    Unit unit = Unit::None;
    Quantity quantity = Quantity::Clock;
    std::vector<std::optional<double>> values;  // as many as there are moments
    std::vector<bool> unsure{};                 // for each of them whether it is; empty: none is
};

struct Recording {
    std::string start;            // time of the first reading, as the file has it
    std::string end;              // and of the last
    std::vector<double> seconds;  // since the first reading, ascending
    std::vector<Series> series;   // those with at least one value
    std::string adapterName;      // empty: not recorded
    std::vector<FanTablePoint> fanCurve;
    std::vector<CsvError> remarks;  // what was left out or corrected, the first of it
    std::size_t furtherRemarks = 0;
};

// "1 further warning", "2 further warnings".
std::string FurtherWarnings(std::size_t count);

// Throws CsvError when the text is no recording, or holds nothing to show.
Recording ReadRecording(std::string_view text);

}  // namespace gputune::tool

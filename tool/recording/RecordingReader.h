// Reads a recording (RecordingFormat.h) from its text.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gputune.h"
#include "tool/recording/Csv.h"
#include "tool/values/Names.h"

namespace gputune::tool {

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
    std::vector<CsvError> remarks;   // what was left out or corrected; the first twenty
    std::size_t furtherRemarks = 0;  // how many more there were
};

// Throws CsvError when the text is no recording, or holds nothing to show.
Recording ReadRecording(std::string_view text);

}  // namespace gputune::tool

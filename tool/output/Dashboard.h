// What `monitor` shows in a console: every sensor with its current, lowest, average and highest reading and its recent
// past, as lines of styled text for a window of any size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "tool/output/StyledText.h"
#include "tool/values/Names.h"
#include "tool/values/Readings.h"
#include "tool/values/Summary.h"

namespace gputune::tool {

// Fonts of old consoles have the characters for bars, but not those for curves.
enum class Glyphs { Bars, Curves };

class Dashboard {
public:
    // `title` names the board; `interval` in seconds.
    Dashboard(std::string title, std::uint32_t vendor, double interval);

    // `frameRate` is nothing when it is not read. An unsure reading is shown, but left out of the summary and the past.
    void Add(std::string const& time, Readings const& readings, std::optional<double> frameRate);
    // Lowest, average, highest and past begin again with the last reading.
    void Reset();

    // At most `height` lines of `width` columns each. A narrow window has no past, a narrower one no average, then no
    // extremes. When a low window leaves out sensors, a line says so.
    std::vector<StyledLine> Frame(std::size_t width, std::size_t height, Glyphs glyphs, std::string const& hint) const;

private:
    struct Gauge {
        std::string title;
        Unit unit;
        Quantity quantity;
        std::optional<double> now{};
        bool unsure = false;  // whether `now` is
        Summary summary{};    // of the readings that are sure, as `past`
        std::deque<std::optional<double>> past{};

        void Add(std::optional<double> reading, bool isUnsure);
        void Reset();
        bool IsShown() const { return now.has_value() || summary.count > 0; }
    };
    struct Layout;

    Layout MakeLayout(std::size_t width) const;
    StyledLine Heading(Layout const& layout, Glyphs glyphs) const;
    static StyledLine Row(Gauge const& gauge, Layout const& layout, Glyphs glyphs);

    std::string title_;
    double interval_;
    std::string time_;
    std::size_t readings_ = 0;
    std::vector<Gauge> gauges_;
};

}  // namespace gputune::tool

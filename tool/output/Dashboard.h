// What `monitor` shows in a console: every sensor with its current, lowest, average and highest reading and its recent
// past, as lines of styled text for a window of any size. Independent of the operating system.
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

// Which characters the console's font is sure to have: those of the oldest ones draw bars, not curves.
enum class Glyphs { Bars, Curves };

class Dashboard {
public:
    // `title` names the board; `interval` in seconds.
    Dashboard(std::string title, std::uint32_t vendor, double interval);

    // `frameRate`: nothing when it is not read. A reading that is unsure is shown, but does not count.
    void Add(std::string const& time, Readings const& readings, std::optional<double> frameRate);
    // Forgets the past: lowest, average and highest begin with the last reading.
    void Reset();

    // At most `height` lines of `width` columns each. What does not fit is left out: first the past, then average and
    // extremes, and sensors at the end, which a line tells.
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

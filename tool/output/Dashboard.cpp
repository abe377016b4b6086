#include "tool/output/Dashboard.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tool/output/Bar.h"
#include "tool/values/Duration.h"
#include "tool/values/Numbers.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

// More than a window has columns.
constexpr std::size_t kRememberedReadings = 512;
constexpr std::size_t kNumberWidth = 9;
constexpr std::size_t kNarrowestPast = 8;

// In the order of Quantity.
constexpr Style kQuantityStyles[] = {Style::Blue,   Style::Red,     Style::Cyan,   Style::Green,
                                     Style::Yellow, Style::Magenta, Style::Yellow, Style::Green};

std::string Figure(std::optional<double> const& value) {
    return PadLeft(value ? FormatNumber(*value) : "-", kNumberWidth);
}

// A bar on a scale from 0 to 100, or to the highest reading if the unit has no natural end.
std::string ScaledBar(double value, double maximum, Unit unit, std::size_t width) {
    bool const endsAtHundred = unit == Unit::Percent || unit == Unit::Celsius;
    double const scale = std::max(maximum, endsAtHundred ? 100.0 : 0.0);
    double const part = scale > 0 ? std::clamp(value / scale, 0.0, 1.0) : 0.0;
    return Bar(static_cast<std::size_t>(std::lround(part * static_cast<double>(width))), width);
}

// A character for each reading, the newest at the right. The scale goes from the lowest to the highest reading shown.
std::string Curve(std::deque<std::optional<double>> const& past, Unit unit, std::size_t width) {
    static constexpr char const* kLevels[] = {"\u2581", "\u2582", "\u2583", "\u2584",
                                              "\u2585", "\u2586", "\u2587", "\u2588"};
    std::size_t const shown = std::min(width, past.size());
    auto const first = past.end() - static_cast<std::ptrdiff_t>(shown);
    double low = unit == Unit::Percent ? 0 : std::numeric_limits<double>::max();
    double high = unit == Unit::Percent ? 100 : std::numeric_limits<double>::lowest();
    for (auto reading = first; reading != past.end(); ++reading) {
        if (*reading) {
            low = std::min(low, **reading);
            high = std::max(high, **reading);
        }
    }
    // A small change of a large value must not look large.
    double const span = std::max({high - low, std::abs(high) * 0.1, 1e-6});
    std::string curve(width - shown, ' ');
    for (auto reading = first; reading != past.end(); ++reading) {
        double const part = *reading ? (**reading - low) / span : 0;
        curve += *reading ? kLevels[std::min<std::size_t>(static_cast<std::size_t>(part * 8), 7)] : " ";
    }
    return curve;
}

}  // namespace

// Which columns there are, and how wide.
struct Dashboard::Layout {
    std::size_t title = 0;
    std::size_t unit = 0;  // 0: not shown; likewise past
    bool extremes = false;
    bool average = false;
    std::size_t past = 0;
};

Dashboard::Dashboard(std::string title, std::uint32_t vendor, double interval)
    : title_(std::move(title)), interval_(interval) {
    for (SensorName const& sensor : kSensorNames) {
        gauges_.push_back({sensor.text, SensorUnit(sensor, vendor), sensor.quantity});
    }
    gauges_.push_back({kFrameRateName.text, Unit::FramesPerSecond, Quantity::FrameRate});
}

void Dashboard::Gauge::Add(std::optional<double> reading, bool isUnsure) {
    now = reading;
    unsure = isUnsure;
    if (unsure) {
        reading = std::nullopt;
    }
    past.push_back(reading);
    if (past.size() > kRememberedReadings) {
        past.pop_front();
    }
    if (reading) {
        summary.Add(*reading);
    }
}

void Dashboard::Gauge::Reset() {
    summary = {};
    past.clear();
    Add(now, unsure);
}

void Dashboard::Add(std::string const& time, Readings const& readings, std::optional<double> frameRate) {
    time_ = time;
    ++readings_;
    for (std::size_t i = 0; i < readings.size(); ++i) {
        gauges_[i].Add(readings[i], i == GPUTUNE_HWM_FAN_SPEED_RPM && readings.fanUnsure);
    }
    gauges_.back().Add(frameRate, false);
}

void Dashboard::Reset() {
    readings_ = 1;
    for (Gauge& gauge : gauges_) {
        gauge.Reset();
    }
}

Dashboard::Layout Dashboard::MakeLayout(std::size_t width) const {
    Layout layout;
    std::size_t unitWidth = 0;
    for (Gauge const& gauge : gauges_) {
        if (gauge.IsShown()) {
            layout.title = std::max(layout.title, DisplayWidth(gauge.title));
            unitWidth = std::max(unitWidth, DisplayWidth(UnitName(gauge.unit).text));
        }
    }
    std::size_t used = layout.title + kNumberWidth;
    auto const take = [&used, width](std::size_t columns) {
        bool const fits = used + columns <= width;
        used += fits ? columns : 0;
        return fits;
    };
    layout.unit = take(unitWidth + 1) ? unitWidth : 0;
    layout.extremes = layout.unit > 0 && take(2 * kNumberWidth);
    layout.average = layout.extremes && take(kNumberWidth);
    if (layout.average && used + 2 + kNarrowestPast <= width) {
        layout.past = std::min(width - used - 2, kRememberedReadings);
    }
    return layout;
}

StyledLine Dashboard::Heading(Layout const& layout, Glyphs glyphs) const {
    std::string text = PadRight("Sensor", layout.title) + PadLeft("now", kNumberWidth);
    text += layout.extremes ? PadLeft("min", kNumberWidth) : "";
    text += layout.average ? PadLeft("avg", kNumberWidth) : "";
    text += layout.extremes ? PadLeft("max", kNumberWidth) : "";
    if (layout.past > 0 && glyphs == Glyphs::Curves) {
        std::string const period = "last " + ElapsedText(interval_ * static_cast<double>(layout.past));
        text += std::string(layout.unit + 3, ' ') + period;
    }
    return {{text, Style::Dim}};
}

StyledLine Dashboard::Row(Gauge const& gauge, Layout const& layout, Glyphs glyphs) {
    Summary const& summary = gauge.summary;
    auto const figure = [&summary](double value) {
        return Figure(summary.count > 0 ? std::optional(value) : std::nullopt);
    };
    StyledLine line{
        {PadRight(gauge.title, layout.title), Style::Plain},
        {gauge.unsure ? PadLeft(FormatNumber(gauge.now.value_or(0)) + "?", kNumberWidth) : Figure(gauge.now),
         Style::Strong}};
    std::string figures;
    if (layout.extremes) {
        figures += figure(summary.minimum);
        // One decimal, because more would change all the time; but within the extremes, which have more.
        figures += layout.average
                       ? figure(std::clamp(std::round(summary.average * 10) / 10, summary.minimum, summary.maximum))
                       : "";
        figures += figure(summary.maximum);
    }
    line.push_back({figures, Style::Plain});
    if (layout.unit > 0) {
        line.push_back({" " + PadRight(UnitName(gauge.unit).text, layout.unit + 2), Style::Dim});
    }
    if (layout.past > 0) {
        line.push_back({glyphs == Glyphs::Curves
                            ? Curve(gauge.past, gauge.unit, layout.past)
                            : ScaledBar(gauge.now.value_or(0), summary.maximum, gauge.unit, layout.past),
                        kQuantityStyles[static_cast<std::size_t>(gauge.quantity)]});
    }
    return line;
}

std::vector<StyledLine> Dashboard::Frame(std::size_t width, std::size_t height, Glyphs glyphs,
                                         std::string const& hint) const {
    Layout const layout = MakeLayout(width);
    std::vector<StyledLine> lines;
    lines.push_back({{title_, Style::Strong}});
    lines.push_back({{time_ + "  " + CountText(readings_, "reading") + ", one every " + FormatNumber(interval_) + " s",
                      Style::Dim}});
    lines.push_back(Heading(layout, glyphs));

    std::vector<StyledLine> rows;
    for (Gauge const& gauge : gauges_) {
        if (gauge.IsShown()) {
            rows.push_back(Row(gauge, layout, glyphs));
        }
    }
    if (rows.empty()) {
        rows.push_back({{"no sensor available", Style::Plain}});
    }
    bool const isUnsure = std::any_of(gauges_.begin(), gauges_.end(), [](Gauge const& gauge) { return gauge.unsure; });
    std::size_t const below = isUnsure ? 2 : 1;
    std::size_t const room = height > lines.size() + below ? height - lines.size() - below : 0;
    if (rows.size() > room) {
        std::size_t const kept = room > 0 ? room - 1 : 0;
        std::size_t const hidden = rows.size() - kept;
        rows.resize(kept);
        rows.push_back({{"and " + std::to_string(hidden) + " more: the window is too low", Style::Dim}});
    }
    lines.insert(lines.end(), rows.begin(), rows.end());
    if (isUnsure) {
        lines.push_back({{std::string("? ") + kUnsureFan.text, Style::Dim}});
    }
    lines.push_back({{hint, Style::Dim}});
    lines.resize(std::min(lines.size(), height));
    for (StyledLine& line : lines) {
        line = FitLine(line, width);
    }
    return lines;
}

}  // namespace gputune::tool

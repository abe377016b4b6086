#include "tool/output/Dashboard.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace gputune::tool {

namespace {

// More than a window is wide.
constexpr std::size_t rememberedReadings = 512;
constexpr std::size_t numberWidth = 9;
constexpr std::size_t narrowestPast = 8;

Style QuantityStyle(Quantity quantity) {
    switch (quantity) {
        case Quantity::Clock:
            return Style::Blue;
        case Quantity::Temperature:
            return Style::Red;
        case Quantity::Fan:
            return Style::Cyan;
        case Quantity::Load:
        case Quantity::FrameRate:
            return Style::Green;
        case Quantity::Power:
        case Quantity::Voltage:
            return Style::Yellow;
        case Quantity::Memory:
            return Style::Magenta;
    }
    return Style::Plain;
}

char const* Sequence(Style style) {
    switch (style) {
        case Style::Plain:
            return "";
        case Style::Dim:
            return "\x1b[90m";
        case Style::Strong:
            return "\x1b[1m";
        case Style::Red:
            return "\x1b[91m";
        case Style::Green:
            return "\x1b[92m";
        case Style::Yellow:
            return "\x1b[93m";
        case Style::Blue:
            return "\x1b[94m";
        case Style::Magenta:
            return "\x1b[95m";
        case Style::Cyan:
            return "\x1b[96m";
    }
    return "";
}

// The first `width` characters.
std::string Cut(std::string const& text, std::size_t width) {
    std::size_t end = 0;
    for (std::size_t count = 0; end < text.size() && count < width; ++count) {
        do {
            ++end;
        } while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U);
    }
    return text.substr(0, end);
}

std::string Number(std::optional<double> const& value) {
    return value ? FormatNumber(*value) : "-";
}

// Up to the value's part of its scale, which begins at 0 and ends at 100 or at the highest reading.
std::string Bar(double value, double maximum, Unit unit, std::size_t width) {
    bool const endsAtHundred = unit == Unit::Percent || unit == Unit::Celsius;
    double const scale = std::max(maximum, endsAtHundred ? 100.0 : 0.0);
    double const part = scale > 0 ? std::clamp(value / scale, 0.0, 1.0) : 0.0;
    auto const full = static_cast<std::size_t>(std::lround(part * static_cast<double>(width)));
    std::string bar;
    for (std::size_t i = 0; i < width; ++i) {
        bar += i < full ? "\u2588" : "\u2591";
    }
    return bar;
}

// One character a reading, the last one at the right; between the lowest and the highest of those shown.
std::string Curve(std::deque<std::optional<double>> const& past, Unit unit, std::size_t width) {
    static constexpr char const* levels[] = {"\u2581", "\u2582", "\u2583", "\u2584",
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
    // What hardly changes is to look like that.
    double const span = std::max({high - low, std::abs(high) * 0.1, 1e-6});
    std::string curve(width - shown, ' ');
    for (auto reading = first; reading != past.end(); ++reading) {
        double const part = *reading ? (**reading - low) / span : 0;
        curve += *reading ? levels[std::min<std::size_t>(static_cast<std::size_t>(part * 8), 7)] : " ";
    }
    return curve;
}

}  // namespace

StyledLine FitLine(StyledLine const& line, std::size_t width) {
    StyledLine fitted;
    std::size_t left = width;
    for (StyledText const& part : line) {
        fitted.push_back({Cut(part.text, left), part.style});
        left -= DisplayWidth(fitted.back().text);
    }
    fitted.push_back({std::string(left, ' '), Style::Plain});
    return fitted;
}

std::string TerminalText(StyledLine const& line, bool colours) {
    std::string text;
    for (StyledText const& part : line) {
        bool const styled = colours && part.style != Style::Plain && !part.text.empty();
        text += styled ? Sequence(part.style) + part.text + "\x1b[m" : part.text;
    }
    return text;
}

// Which columns there are, and how wide.
struct Dashboard::Layout {
    std::size_t title = 0;
    std::size_t unit = 0;  // 0: not shown, as with the past
    bool extremes = false;
    bool average = false;
    std::size_t past = 0;
};

Dashboard::Dashboard(std::string title, std::uint32_t vendor, double interval)
    : title_(std::move(title)), interval_(interval) {
    for (SensorName const& sensor : sensorNames) {
        gauges_.push_back({sensor.text, SensorUnit(sensor, vendor), sensor.quantity});
    }
    gauges_.push_back({frameRateName.text, Unit::FramesPerSecond, Quantity::FrameRate});
}

void Dashboard::Gauge::Add(std::optional<double> reading, bool isUnsure) {
    now = reading;
    unsure = isUnsure;
    if (unsure) {
        reading = std::nullopt;
    }
    past.push_back(reading);
    if (past.size() > rememberedReadings) {
        past.pop_front();
    }
    if (reading) {
        minimum = std::min(*reading, minimum.value_or(*reading));
        maximum = std::max(*reading, maximum.value_or(*reading));
        ++count;
        average += (*reading - average) / static_cast<double>(count);
    }
}

std::optional<double> Dashboard::Gauge::ShownAverage() const {
    if (count == 0) {
        return std::nullopt;
    }
    // One decimal: more would flicker. But not beyond the extremes, which have more.
    return std::clamp(std::round(average * 10) / 10, *minimum, *maximum);
}

void Dashboard::Gauge::Reset() {
    std::optional<double> const last = now;
    now = minimum = maximum = std::nullopt;
    average = 0;
    count = 0;
    past.clear();
    Add(last, unsure);
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
    std::size_t used = layout.title + numberWidth;
    auto const take = [&used, width](std::size_t columns) {
        bool const fits = used + columns <= width;
        used += fits ? columns : 0;
        return fits;
    };
    layout.unit = take(unitWidth + 1) ? unitWidth : 0;
    layout.extremes = layout.unit > 0 && take(2 * numberWidth);
    layout.average = layout.extremes && take(numberWidth);
    if (layout.average && used + 2 + narrowestPast <= width) {
        layout.past = std::min(width - used - 2, rememberedReadings);
    }
    return layout;
}

StyledLine Dashboard::Heading(Layout const& layout, Glyphs glyphs) const {
    std::string text = PadRight("Sensor", layout.title) + PadLeft("now", numberWidth);
    text += layout.extremes ? PadLeft("min", numberWidth) : "";
    text += layout.average ? PadLeft("avg", numberWidth) : "";
    text += layout.extremes ? PadLeft("max", numberWidth) : "";
    if (layout.past > 0 && glyphs == Glyphs::Curves) {
        std::string const period = "last " + ElapsedText(interval_ * static_cast<double>(layout.past));
        text += std::string(layout.unit + 3, ' ') + period;
    }
    return {{text, Style::Dim}};
}

StyledLine Dashboard::Row(Gauge const& gauge, Layout const& layout, Glyphs glyphs) {
    StyledLine line{{PadRight(gauge.title, layout.title), Style::Plain},
                    {PadLeft(Number(gauge.now) + (gauge.unsure ? "?" : ""), numberWidth), Style::Strong}};
    std::string figures;
    if (layout.extremes) {
        figures += PadLeft(Number(gauge.minimum), numberWidth);
        figures += layout.average ? PadLeft(Number(gauge.ShownAverage()), numberWidth) : "";
        figures += PadLeft(Number(gauge.maximum), numberWidth);
    }
    line.push_back({figures, Style::Plain});
    if (layout.unit > 0) {
        line.push_back({" " + PadRight(UnitName(gauge.unit).text, layout.unit + 2), Style::Dim});
    }
    if (layout.past > 0) {
        line.push_back({glyphs == Glyphs::Curves
                            ? Curve(gauge.past, gauge.unit, layout.past)
                            : Bar(gauge.now.value_or(0), gauge.maximum.value_or(0), gauge.unit, layout.past),
                        QuantityStyle(gauge.quantity)});
    }
    return line;
}

std::vector<StyledLine> Dashboard::Frame(std::size_t width, std::size_t height, Glyphs glyphs,
                                         std::string const& hint) const {
    Layout const layout = MakeLayout(width);
    std::vector<StyledLine> lines;
    lines.push_back({{title_, Style::Strong}});
    lines.push_back(
        {{time_ + "  " + CountText(readings_) + ", one every " + FormatNumber(interval_) + " s", Style::Dim}});
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
        lines.push_back({{std::string("? ") + unsureFan.text, Style::Dim}});
    }
    lines.push_back({{hint, Style::Dim}});
    lines.resize(std::min(lines.size(), height));
    for (StyledLine& line : lines) {
        line = FitLine(line, width);
    }
    return lines;
}

}  // namespace gputune::tool

#include "tool/serve/MetricsText.h"

#include <charconv>

#include "tool/serve/Metrics.h"

namespace gputune::tool {

namespace {

// A backslash before what would end the text, and in quotation marks before these.
std::string EscapedForMetrics(std::string_view text, bool inQuotationMarks) {
    std::string escaped;
    for (char const c : text) {
        if (c == '\n') {
            escaped += "\\n";
            continue;
        }
        if (c == '\\' || (c == '"' && inQuotationMarks)) {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

// The fewest digits that tell the number from all others, with a point in every locale.
std::string NumberText(double value) {
    char buffer[32];
    return {buffer, std::to_chars(buffer, buffer + sizeof(buffer), value).ptr};
}

// OpenMetrics' name of all series of a metric together.
std::string FamilyName(Metric const& metric) {
    constexpr std::string_view kTotal = "_total";
    constexpr std::string_view kInfo = "_info";
    std::string name = metric.name;
    if (metric.type == MetricType::Counter) {
        name.resize(name.size() - kTotal.size());
    } else if (metric.type == MetricType::Info) {
        name.resize(name.size() - kInfo.size());
    }
    return name;
}

void AddDescription(std::string& text, Metric const& metric, MetricsFormat format) {
    bool const isOpen = format == MetricsFormat::OpenMetrics;
    std::string const family = isOpen ? FamilyName(metric) : metric.name;
    // The older format has no such type.
    bool const isGauge = metric.type == MetricType::Info && !isOpen;
    text += "# HELP " + family + " " + EscapedForMetrics(metric.help, isOpen) + "\n";
    text += "# TYPE " + family + " " + MetricTypeName(isGauge ? MetricType::Gauge : metric.type) + "\n";
    if (isOpen && *metric.unit != '\0') {
        text += "# UNIT " + family + " " + metric.unit + "\n";
    }
}

void AddSeries(std::string& text, Metric const& metric, MetricPoint const& point) {
    text += metric.name;
    text += point.suffix;
    char separator = '{';
    for (auto const& [name, value] : point.labels) {
        text += separator;
        text += std::string(name) + "=\"" + EscapedForMetrics(value, true) + "\"";
        separator = ',';
    }
    if (!point.labels.empty()) {
        text += '}';
    }
    text += " " + NumberText(point.value) + "\n";
}

}  // namespace

char const* ContentType(MetricsFormat format) {
    return format == MetricsFormat::OpenMetrics ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
                                                : "text/plain; version=0.0.4; charset=utf-8";
}

std::string MetricsText(Snapshot const& snapshot, MetricsFormat format) {
    std::string text;
    std::vector<MetricPoint> points;
    for (Metric const& metric : Metrics()) {
        points.clear();
        metric.collect(snapshot, points);
        if (points.empty()) {
            continue;
        }
        AddDescription(text, metric, format);
        for (MetricPoint const& point : points) {
            AddSeries(text, metric, point);
        }
    }
    return format == MetricsFormat::OpenMetrics ? text + "# EOF\n" : text;
}

}  // namespace gputune::tool

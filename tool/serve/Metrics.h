// The metrics: the one list of them, from which the text is made, and what each has at a moment.
#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tool/serve/Snapshot.h"

namespace gputune::tool {

enum class MetricType { Gauge, Counter, Histogram, Info };

// "gauge".
char const* MetricTypeName(MetricType type);

// One series of a metric.
struct MetricPoint {
    std::vector<std::pair<char const*, std::string>> labels{};  // values as they are, in UTF-8
    double value = 0;
    char const* suffix = "";  // of a histogram's series: "_bucket"
};

struct Metric {
    char const* name;  // of its series, but for a histogram's suffixes
    MetricType type;
    char const* unit;    // which the name ends in; empty: none
    char const* labels;  // and their values, for people: "sensor: gpu, hotspot"
    char const* help;
    char const* source;  // where the values come from, for people
    // Only what was read in the last sample, and finite.
    void (*collect)(Snapshot const& snapshot, std::vector<MetricPoint>& points);
};

std::span<Metric const> Metrics();

}  // namespace gputune::tool

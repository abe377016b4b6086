// What the library reads in a profile file: the limits and the rows. For the reader of the library and for the check of
// such files in the tool, so that it depends on the public header alone.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "gputune.h"

namespace gputune::profile {

// Bytes. Room for thousands of boards; what is longer was not meant as a profile file.
constexpr std::size_t kLargestDocument = 4 * 1024 * 1024;

// Bytes between a tag's '<' and '>'. The XML parser compares every attribute of an element with all the others, so that
// one element of megabytes would keep it busy for minutes.
constexpr std::size_t kLongestTag = 4096;

struct FloatRow {
    std::string_view name;
    float PredefinedPerformanceParameter::*normal;
    float PredefinedPerformanceParameter::*given;  // null: the row has no such attribute; read in board entries only
};

struct IntRow {
    std::string_view name;
    int PredefinedPerformanceParameter::*normal;
};

constexpr std::array<FloatRow, 6> kFloatRows{{
    {"GpuOC", &PredefinedPerformanceParameter::GpuOC, &PredefinedPerformanceParameter::GpuOCGivenValue},
    {"MemOC", &PredefinedPerformanceParameter::MemOC, &PredefinedPerformanceParameter::MemOCGivenValue},
    {"PowerOC", &PredefinedPerformanceParameter::PowerOC, nullptr},
    {"GpuSilent", &PredefinedPerformanceParameter::GpuSilent, nullptr},
    {"MemSilent", &PredefinedPerformanceParameter::MemSilent, nullptr},
    {"PowerSilent", &PredefinedPerformanceParameter::PowerSilent, nullptr},
}};

// Read in board entries only.
constexpr std::array<IntRow, 2> kIntRows{{
    {"Watt", &PredefinedPerformanceParameter::Watt},
    {"NewestVBIOS", &PredefinedPerformanceParameter::NewestVBIOS},
}};

// Where the end mark begins, and past it; npos when it is missing.
inline std::size_t PastEndMark(std::string_view text, std::size_t from, std::string_view mark) {
    std::size_t const found = text.find(mark, from);
    return found == std::string_view::npos ? found : found + mark.size();
}

// Past the '>' of the tag that begins at `start`; one inside a quoted value does not count.
inline std::size_t PastTag(std::string_view text, std::size_t start) {
    std::size_t position = start;
    for (;;) {
        position = text.find_first_of("\"'>", position);
        if (position == std::string_view::npos || text[position] == '>') {
            return position == std::string_view::npos ? position : position + 1;
        }
        position = PastEndMark(text, position + 1, text.substr(position, 1));
        if (position == std::string_view::npos) {
            return position;
        }
    }
}

// The place of the first tag that is longer than kLongestTag; npos when there is none. Exact up to the first error of
// the XML text, at which the parser stops anyway.
inline std::size_t FindLongTag(std::string_view text) {
    std::size_t start = 0;
    while ((start = text.find('<', start)) != std::string_view::npos) {
        std::string_view const rest = text.substr(start);
        std::size_t end = 0;
        if (rest.starts_with("<?")) {
            end = PastEndMark(text, start + 2, "?>");
        } else if (rest.starts_with("<!--")) {
            end = PastEndMark(text, start + 4, "-->");
        } else if (rest.starts_with("<![CDATA[")) {
            end = PastEndMark(text, start + 9, "]]>");
        } else if (rest.starts_with("<!")) {
            end = PastEndMark(text, start + 2, ">");
        } else {
            end = PastTag(text, start);
            std::size_t const length = (end == std::string_view::npos ? text.size() : end) - start;
            if (length > kLongestTag) {
                return start;
            }
        }
        if (end == std::string_view::npos) {
            break;
        }
        start = end;
    }
    return std::string_view::npos;
}

}  // namespace gputune::profile

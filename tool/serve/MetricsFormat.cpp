// Which format a request asks for.
#include <algorithm>
#include <optional>
#include <vector>

#include "tool/serve/MetricsText.h"
#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

// One of the kinds of contents that a request accepts: "text/plain;version=0.0.4;q=0.5".
struct MediaRange {
    std::string type{};     // in lower case: "text/plain", "text/*", "*/*"
    std::string version{};  // empty: any
    double quality = 1;     // 0: not wanted
};

std::string_view Trimmed(std::string_view text) {
    auto const isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string InLowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

// The parts between separators, which do not count in quotation marks.
std::vector<std::string_view> SplitHeader(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    bool isQuoted = false;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i == text.size() || (text[i] == separator && !isQuoted)) {
            parts.push_back(Trimmed(text.substr(begin, i - begin)));
            begin = i + 1;
        } else if (text[i] == '"') {
            isQuoted = !isQuoted;
        }
    }
    return parts;
}

std::string_view WithoutQuotationMarks(std::string_view text) {
    return text.size() >= 2 && text.front() == '"' && text.back() == '"' ? text.substr(1, text.size() - 2) : text;
}

// The number of "q=0.5"; nothing for what is none.
std::optional<double> ReadQuality(std::string_view text) {
    std::optional<double> quality = ParseNumber<double>(text, std::chars_format::fixed);
    if (quality && !(*quality >= 0 && *quality <= 1)) {
        quality.reset();
    }
    return quality;
}

// Nothing for what is none.
std::optional<MediaRange> ReadRange(std::string_view text) {
    std::vector<std::string_view> const parts = SplitHeader(text, ';');
    MediaRange range{.type = std::string(parts.front())};
    for (auto part = parts.begin() + 1; part != parts.end(); ++part) {
        std::size_t const equals = part->find('=');
        if (equals == std::string_view::npos) {
            continue;
        }
        std::string_view const name = Trimmed(part->substr(0, equals));
        std::string_view const value = WithoutQuotationMarks(Trimmed(part->substr(equals + 1)));
        if (name == "version") {
            range.version = value;
        } else if (name == "q") {
            std::optional<double> const quality = ReadQuality(value);
            if (!quality) {
                return std::nullopt;
            }
            range.quality = *quality;
        }
    }
    return range;
}

// How well a range fits a format, and how much that is wanted.
struct Fit {
    int precision = 0;  // 0: not at all
    double quality = 0;
};

Fit FitOf(std::vector<MediaRange> const& ranges, std::string const& type, std::string const& version) {
    Fit best;
    for (MediaRange const& range : ranges) {
        int precision = 0;
        if (range.type == type && (range.version.empty() || range.version == version)) {
            precision = range.version.empty() ? 3 : 4;
        } else if (range.type == type.substr(0, type.find('/')) + "/*") {
            precision = 2;
        } else if (range.type == "*/*") {
            precision = 1;
        }
        if (precision > best.precision ||
            (precision > 0 && precision == best.precision && range.quality > best.quality)) {
            best = {.precision = precision, .quality = range.quality};
        }
    }
    return best;
}

}  // namespace

MetricsFormat ChooseFormat(std::string_view accept) {
    std::vector<MediaRange> ranges;
    std::string const lower = InLowerCase(accept);
    for (std::string_view const part : SplitHeader(lower, ',')) {
        if (std::optional<MediaRange> range = ReadRange(part)) {
            ranges.push_back(std::move(*range));
        }
    }
    Fit const open = FitOf(ranges, "application/openmetrics-text", "1.0.0");
    Fit const plain = FitOf(ranges, "text/plain", "0.0.4");
    bool const isNamed = open.precision >= 3;
    bool const isBetter =
        open.quality > plain.quality || (open.quality == plain.quality && open.precision > plain.precision);
    return isNamed && open.quality > 0 && isBetter ? MetricsFormat::OpenMetrics : MetricsFormat::Prometheus;
}

}  // namespace gputune::tool

// What is wrong with a text of metrics, by the rules of its format and by the conventions for names and base units.
#pragma once

#include <algorithm>
#include <charconv>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tool/serve/MetricsText.h"

namespace gputune::tool {

class MetricsCheck {
public:
    MetricsCheck(std::string const& text, MetricsFormat format) : isOpen_(format == MetricsFormat::OpenMetrics) {
        if (!text.ends_with('\n')) {
            Say("the last line has no end");
        }
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            Read(line);
        }
        EndFamily();
        if (isOpen_ && !hasEnd_) {
            Say("no # EOF");
        }
    }

    // Empty when all is well.
    std::vector<std::string> const& Problems() const { return problems_; }
    // By the series' text: gputune_clock_hertz{domain="core"}.
    std::map<std::string, double> const& Series() const { return series_; }

private:
    void Say(std::string const& problem) { problems_.push_back(problem); }

    void Read(std::string const& line) {
        static std::regex const description(R"(# (HELP|TYPE|UNIT) ([a-z_]+) (.*))");
        static std::regex const series(
            R"re(([a-z_]+)((?:\{(?:[a-z_]+="(?:[^"\\]|\\["\\n])*",?)*\})?) ([+-]?[0-9]+(?:\.[0-9]+)?(?:e[+-][0-9]+)?))re");
        std::smatch match;
        if (hasEnd_) {
            Say("behind the end: " + line);
        } else if (line == "# EOF" && isOpen_) {
            hasEnd_ = true;
        } else if (std::regex_match(line, match, description)) {
            ReadDescription(match[1], match[2], match[3]);
        } else if (std::regex_match(line, match, series)) {
            ReadSeries(match[1], match[2], match[3]);
        } else {
            Say("not understood: " + line);
        }
    }

    void ReadDescription(std::string const& kind, std::string const& family, std::string const& text) {
        if (family != family_) {
            EndFamily();
            family_ = family;
            if (!families_.insert(family).second) {
                Say("not together: " + family);
            }
        }
        if (count_ > 0 || !kinds_.insert(kind).second) {
            Say("too late, or twice: " + kind + " " + family);
        }
        if (kind == "TYPE") {
            type_ = text;
        } else if (kind == "UNIT") {
            unit_ = text;
        } else if (text.empty() || std::regex_search(text, std::regex(isOpen_ ? R"re((^|[^\\])")re" : R"(\\[^\\n])"))) {
            Say("help: " + family);
        }
    }

    void ReadSeries(std::string const& name, std::string const& labels, std::string const& value) {
        ++count_;
        std::string suffix = name.starts_with(family_) && !family_.empty() ? name.substr(family_.size()) : "?";
        std::set<std::string> allowed = {""};
        if (type_ == "histogram") {
            allowed = {"_bucket", "_sum", "_count"};
        } else if (isOpen_ && type_ == "counter") {
            allowed = {"_total"};
        } else if (isOpen_ && type_ == "info") {
            allowed = {"_info"};
        }
        if (allowed.count(suffix) == 0) {
            Say("not of the family " + family_ + ": " + name);
        }
        CheckLabels(name, labels);
        double number = 0;
        std::from_chars(value.data(), value.data() + value.size(), number);
        if (!series_.emplace(name + labels, number).second) {
            Say("twice: " + name + labels);
        }
    }

    void CheckLabels(std::string const& name, std::string const& labels) {
        static std::regex const label(R"re(([a-z_]+)="((?:[^"\\]|\\.)*)")re");
        std::set<std::string> names;
        for (std::sregex_iterator it(labels.begin(), labels.end(), label); it != std::sregex_iterator(); ++it) {
            if (!names.insert((*it)[1]).second) {
                Say("label twice: " + name);
            }
            std::string const bound = (*it)[2];
            if ((*it)[1] == "le" && bound != "+Inf" && bound.find('.') == std::string::npos) {
                Say("no canonical bound: " + bound);
            }
        }
        if (std::any_of(names.begin(), names.end(), [](std::string const& x) { return x.starts_with("__"); }) ||
            labels.ends_with(",}") || labels == "{}") {
            Say("labels: " + labels);
        }
        // The board's identity is on one metric alone.
        if (names.count("board") + names.count("vendor") > 0 && name != "gputune_board_info") {
            Say("identity on " + name);
        }
    }

    void EndFamily() {
        if (family_.empty()) {
            return;
        }
        if (kinds_.count("HELP") + kinds_.count("TYPE") != 2 || count_ == 0) {
            Say("incomplete: " + family_);
        }
        std::set<std::string> types = {"gauge", "counter", "histogram"};
        if (isOpen_) {
            types.insert("info");
        }
        if (types.count(type_) == 0) {
            Say("type " + type_ + ": " + family_);
        }
        if (!family_.starts_with("gputune_")) {
            Say("prefix: " + family_);
        }
        if (!isOpen_ && (type_ == "counter") != family_.ends_with("_total")) {
            Say("counters end in _total: " + family_);
        }
        if (isOpen_ && (family_.ends_with("_total") || family_.ends_with("_info"))) {
            Say("suffix in the family's name: " + family_);
        }
        CheckUnit();
        family_.clear();
        type_.clear();
        unit_.clear();
        kinds_.clear();
        count_ = 0;
    }

    void CheckUnit() {
        static std::set<std::string> const bases = {"seconds", "celsius", "hertz", "rpm",
                                                    "ratio",   "watts",   "volts", "bytes"};
        static std::regex const scaled(
            "_(milli|micro|kilo|mega|giga)?(mhz|khz|percent|ms|mv|mb|megabytes|millivolts|megahertz|milliseconds)(_|$"
            ")");
        if (std::regex_search(family_, scaled)) {
            Say("no base unit: " + family_);
        }
        std::string const last = family_.substr(family_.rfind('_') + 1);
        if (isOpen_ && (bases.count(last) > 0 ? unit_ != last : !unit_.empty())) {
            Say("unit \"" + unit_ + "\": " + family_);
        }
        if (!isOpen_ && !unit_.empty()) {
            Say("this format has no units: " + family_);
        }
    }

    bool isOpen_;
    bool hasEnd_ = false;
    std::vector<std::string> problems_;
    std::map<std::string, double> series_;
    std::set<std::string> families_;

    // Of the present family.
    std::string family_;
    std::string type_;
    std::string unit_;
    std::set<std::string> kinds_;
    int count_ = 0;
};

}  // namespace gputune::tool

#include "tool/recording/RecordingPage.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "tool/page/PageParts.h"
#include "tool/recording/PackedNumbers.h"
#include "tool/values/Duration.h"
#include "tool/values/Numbers.h"
#include "tool/values/Text.h"

namespace gputune::embedded {

extern std::string_view const kPageHtml;
extern std::string_view const kPageReadingsScript;
extern std::string_view const kPageScript;
extern std::string_view const kPageStyle;

}  // namespace gputune::embedded

namespace gputune::tool {

namespace {

using Json = nlohmann::ordered_json;

Json NumbersJson(std::span<std::optional<double> const> numbers) {
    PackedNumbers packed = PackNumbers(numbers);
    return {{"decimals", packed.decimals}, {"values", std::move(packed.values)}, {"gaps", std::move(packed.gaps)}};
}

bool IsUnsure(Series const& series, std::size_t moment) {
    return moment < series.unsure.size() && series.unsure[moment];
}

// The readings that are sure, or those that are unsure; the others become gaps.
std::vector<std::optional<double>> Select(Series const& series, bool unsure) {
    std::vector<std::optional<double>> selected(series.values);
    for (std::size_t i = 0; i < selected.size(); ++i) {
        if (IsUnsure(series, i) != unsure) {
            selected[i] = std::nullopt;
        }
    }
    return selected;
}

Json SeriesJson(Series const& series) {
    Json const numbers = series.unsure.empty() ? NumbersJson(series.values) : NumbersJson(Select(series, false));
    return {{"title", series.title},
            {"unit", UnitName(series.unit).text},
            {"dashed", IsLimit(series.code)},
            {"numbers", numbers}};
}

Json UnsureJson(Series const& series) {
    return {{"title", series.title + ", unsure"},
            {"unit", UnitName(series.unit).text},
            {"dashed", true},
            {"muted", true},
            {"numbers", NumbersJson(Select(series, true))}};
}

Json SecondsJson(Recording const& recording) {
    return NumbersJson(std::vector<std::optional<double>>(recording.seconds.begin(), recording.seconds.end()));
}

Json GroupsJson(Recording const& recording) {
    Json groups = Json::array();
    for (Quantity const quantity : kQuantityOrder) {
        Json members = Json::array();
        for (Series const& series : recording.series) {
            if (series.quantity != quantity) {
                continue;
            }
            members.push_back(SeriesJson(series));
            if (!series.unsure.empty()) {
                members.push_back(UnsureJson(series));
            }
        }
        if (!members.empty()) {
            groups.push_back({{"title", QuantityName(quantity)}, {"series", std::move(members)}});
        }
    }
    return groups;
}

Series const* Find(Recording const& recording, GputuneHwmKey key) {
    auto const found = std::find_if(recording.series.begin(), recording.series.end(),
                                    [key](Series const& series) { return series.code == kSensorNames[key].code; });
    return found == recording.series.end() ? nullptr : &*found;
}

// For the chart of fan over temperature; null without one of the two.
Json FanJson(Recording const& recording) {
    Series const* const temperature = Find(recording, GPUTUNE_HWM_GPU_TEMPERATURE);
    Series const* speed = Find(recording, GPUTUNE_HWM_FAN_SPEED_PERCENT);
    if (speed == nullptr) {
        speed = Find(recording, GPUTUNE_HWM_FAN_SPEED_RPM);
    }
    if (temperature == nullptr || speed == nullptr) {
        return nullptr;
    }
    Json curve = Json::array();
    for (FanTablePoint const& point : recording.fanCurve) {
        curve.push_back({point.FanTemperature, point.FanSpeed});
    }
    // The titles of two of the series.
    return {{"temperature", temperature->title}, {"speed", speed->title}, {"curve", std::move(curve)}};
}

// The data for the script. Escapes '<', as "</script>" would end the script element. Has a line for every value, as
// many programs cannot show lines of megabytes.
std::string DataText(Recording const& recording) {
    Json const data = {{"count", recording.seconds.size()},
                       {"seconds", SecondsJson(recording)},
                       {"groups", GroupsJson(recording)},
                       {"fan", FanJson(recording)}};
    std::string text = data.dump(0, ' ', false, Json::error_handler_t::replace);
    for (std::size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at)) {
        text.replace(at, 1, "\\u003c");
    }
    return text;
}

std::string SummaryRows(Recording const& recording) {
    std::string rows;
    for (Quantity const quantity : kQuantityOrder) {
        std::string body;
        for (Series const& series : recording.series) {
            if (series.quantity != quantity) {
                continue;
            }
            Summary const summary = Summarize(series);
            body += "<tr><th scope=\"row\">" + EscapeHtml(series.title) + "</th>";
            for (double const figure : {summary.minimum, summary.average, summary.maximum, summary.last}) {
                body += "<td>" + (summary.count > 0 ? FormatNumber(figure) : "–") + "</td>";
            }
            body += "<td>" + EscapeHtml(UnitName(series.unit).text) + "</td></tr>\n";
        }
        rows += body.empty() ? "" : "<tbody>\n" + body + "</tbody>\n";
    }
    return rows;
}

std::string Facts(Recording const& recording, std::string const& fileName) {
    std::string start = recording.start;
    std::replace(start.begin(), start.end(), 'T', ' ');
    return EscapeHtml(fileName) + " · started " + EscapeHtml(start) + " · " + ElapsedText(recording.seconds.back()) +
           " · " + CountText(recording.seconds.size(), "reading");
}

std::string Remarks(Recording const& recording) {
    std::string notes;
    for (CsvError const& remark : recording.remarks) {
        notes += "<p class=\"note\">Line " + std::to_string(remark.line) + ", column " + std::to_string(remark.column) +
                 ": " + EscapeHtml(remark.message) + ".</p>\n";
    }
    if (recording.furtherRemarks > 0) {
        notes += "<p class=\"note\">And " + CountText(recording.furtherRemarks, "further warning") + ".</p>\n";
    }
    for (Series const& series : recording.series) {
        auto const count = std::count(series.unsure.begin(), series.unsure.end(), true);
        if (count > 0) {
            notes += "<p class=\"note\">" + EscapeHtml(series.title) + ": " +
                     CountText(static_cast<std::size_t>(count), "reading") + " of " + WithUnit(0, series.unit) + " " +
                     (count == 1 ? "is " : "are ") + kUnsureFan.text +
                     ". The summary leaves them out; the chart shows them dashed.</p>\n";
        }
    }
    return notes;
}

}  // namespace

Summary Summarize(Series const& series) {
    Summary summary;
    for (std::size_t i = 0; i < series.values.size(); ++i) {
        if (series.values[i] && !IsUnsure(series, i)) {
            summary.Add(*series.values[i]);
        }
    }
    return summary;
}

std::string EscapeHtml(std::string_view text) {
    std::string escaped;
    for (char const c : text) {
        constexpr std::string_view kSpecial = "&<>\"'";
        constexpr char const* kEntities[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&#39;"};
        std::size_t const special = kSpecial.find(c);
        escaped += special == std::string_view::npos ? std::string(1, c) : kEntities[special];
    }
    return escaped;
}

std::string RecordingPage(Recording const& recording, std::string const& fileName) {
    std::string const heading = EscapeHtml(recording.adapterName.empty() ? "Recording" : recording.adapterName);
    std::string const title = heading + " · " + EscapeHtml(recording.start.substr(0, 10));
    return FillPlaceholders(embedded::kPageHtml, {{"version", GPUTUNE_VERSION},
                                                  {"uplot-version", GPUTUNE_UPLOT_VERSION},
                                                  {"title", title},
                                                  {"heading", heading},
                                                  {"facts", Facts(recording, fileName)},
                                                  {"remarks", Remarks(recording)},
                                                  {"summary", SummaryRows(recording)},
                                                  {"file", EscapeHtml(fileName)},
                                                  {"data", DataText(recording)},
                                                  {"common-style", embedded::kPageCommonStyle},
                                                  {"style", embedded::kPageStyle},
                                                  {"charts-script", embedded::kPageCharts},
                                                  {"readings-script", embedded::kPageReadingsScript},
                                                  {"script", embedded::kPageScript},
                                                  {"uplot-licence", embedded::kUplotLicence},
                                                  {"uplot-style", embedded::kUplotStyle},
                                                  {"uplot-script", embedded::kUplotScript}});
}

}  // namespace gputune::tool

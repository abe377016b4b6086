// ReadRecording: from comma-separated values to what can be drawn.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <functional>

#include "Checks.h"
#include "Errors.h"
#include "Recording.h"
#include "RecordingColumns.h"

namespace gputune::tool {

namespace {

// Every sensor under each of its units; which unit it has depends on the vendor.
std::optional<Series> KnownSeries(std::string const& heading) {
    for (SensorName const& sensor : sensorNames) {
        for (std::uint32_t const vendor : {GPUTUNE_VENDOR_AMD, GPUTUNE_VENDOR_INTEL, GPUTUNE_VENDOR_NVIDIA}) {
            Unit const unit = SensorUnit(sensor, vendor);
            if (heading == ColumnName(sensor.code, unit)) {
                return Series{sensor.code, sensor.text, unit, sensor.quantity, {}};
            }
        }
    }
    if (heading == ColumnName(frameRateName.code, Unit::FramesPerSecond)) {
        return Series{frameRateName.code, frameRateName.text, Unit::FramesPerSecond, Quantity::FrameRate, {}};
    }
    return std::nullopt;
}

// Reads `digits` digits of the text into `number` and takes them away.
bool TakeNumber(std::string_view& text, std::size_t digits, int& number) {
    if (text.size() < digits || text.substr(0, digits).find_first_not_of("0123456789") != std::string_view::npos) {
        return false;
    }
    std::from_chars(text.data(), text.data() + digits, number);
    text.remove_prefix(digits);
    return true;
}

bool TakeOneOf(std::string_view& text, std::string_view characters) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

// "2025-01-31T12:34:56.789" as seconds since an arbitrary moment; a blank may stand for the T, seconds may be whole.
std::optional<double> ParseTime(std::string_view text) {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (!TakeNumber(text, 4, year) || !TakeOneOf(text, "-") || !TakeNumber(text, 2, month) || !TakeOneOf(text, "-") ||
        !TakeNumber(text, 2, day) || !TakeOneOf(text, "T ") || !TakeNumber(text, 2, hour) || !TakeOneOf(text, ":") ||
        !TakeNumber(text, 2, minute) || !TakeOneOf(text, ":") || !TakeNumber(text, 2, second)) {
        return std::nullopt;
    }
    double fraction = 0;
    if (TakeOneOf(text, ".")) {
        std::size_t const digits = text.size();
        int number = 0;
        if (digits > 9 || digits == 0 || !TakeNumber(text, digits, number)) {
            return std::nullopt;
        }
        fraction = number / std::pow(10.0, static_cast<double>(digits));
    }
    std::chrono::year_month_day const date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!text.empty() || !date.ok() || hour > 23 || minute > 59 || second > 60) {
        return std::nullopt;
    }
    auto const days = std::chrono::sys_days(date).time_since_epoch().count();
    return static_cast<double>(days) * 86400 + hour * 3600 + minute * 60 + second + fraction;
}

class Reader {
public:
    explicit Reader(std::string_view text) : csv_(text) {}

    Recording Read() {
        ReadHeading();
        while (csv_.Next(fields_)) {
            if (fields_.size() < columns_.size() && !csv_.IsComplete()) {
                Remark(1, "the line was not written to its end, and is left out");
                break;
            }
            ReadLine();
        }
        if (recording_.seconds.empty()) {
            throw CsvError{csv_.LineNumber(), 1, "the recording holds no readings"};
        }
        std::erase_if(recording_.series, [](Series const& series) {
            return std::none_of(series.values.begin(), series.values.end(),
                                [](std::optional<double> const& value) { return value.has_value(); });
        });
        return std::move(recording_);
    }

private:
    // What becomes of a field of this column.
    using Column = std::function<void(CsvField const&)>;

    [[noreturn]] void Fail(CsvField const& field, std::string message) const {
        throw CsvError{csv_.LineNumber(), field.column, std::move(message)};
    }

    void Remark(std::size_t column, std::string message) {
        recording_.remarks.push_back({csv_.LineNumber(), column, std::move(message)});
    }

    void ReadHeading() {
        if (!csv_.Next(fields_)) {
            throw CsvError{1, 1, "the file is empty"};
        }
        bool hasTime = false;
        for (auto field = fields_.begin(); field != fields_.end(); ++field) {
            auto const isSame = [field](CsvField const& other) { return other.text == field->text; };
            if (std::any_of(fields_.begin(), field, isSame)) {
                Fail(*field, "there are two columns " + field->text);
            }
            hasTime = hasTime || field->text == timeColumn;
            columns_.push_back(MakeColumn(*field));
            headings_.push_back(field->text);
        }
        if (!hasTime) {
            throw CsvError{csv_.LineNumber(), 1,
                           "there is no column \"time\": this is no recording of gputunectl, or its columns are not "
                           "separated by commas"};
        }
        if (recording_.series.empty()) {
            throw CsvError{csv_.LineNumber(), 1, "there is no column of a sensor"};
        }
    }

    Column MakeColumn(CsvField const& field) {
        if (field.text == timeColumn) {
            return [this](CsvField const& time) { ReadTime(time); };
        }
        if (field.text == adapterColumn) {
            return [this](CsvField const& name) {
                recording_.adapterName = recording_.adapterName.empty() ? name.text : recording_.adapterName;
            };
        }
        if (field.text == fanCurveColumn) {
            return [this](CsvField const& curve) { ReadCurve(curve); };
        }
        if (std::optional<Series> series = KnownSeries(field.text)) {
            std::size_t const index = recording_.series.size();
            recording_.series.push_back(std::move(*series));
            return
                [this, index](CsvField const& value) { recording_.series[index].values.push_back(ReadNumber(value)); };
        }
        Remark(field.column, "the column \"" + field.text + "\" is not known, and is left out");
        return [](CsvField const&) {};
    }

    void ReadLine() {
        if (fields_.size() != columns_.size()) {
            throw CsvError{csv_.LineNumber(),
                           fields_.size() > columns_.size() ? fields_[columns_.size()].column : fields_.back().column,
                           "the line has " + std::to_string(fields_.size()) + " fields, the heading " +
                               std::to_string(columns_.size())};
        }
        for (std::size_t i = 0; i < fields_.size(); ++i) {
            current_ = i;
            columns_[i](fields_[i]);
        }
    }

    void ReadTime(CsvField const& field) {
        std::optional<double> const time = ParseTime(field.text);
        if (!time) {
            Fail(field, "\"" + field.text + "\" is no time; expected is the form 2025-01-31T12:34:56.789");
        }
        std::vector<double>& seconds = recording_.seconds;
        if (seconds.empty()) {
            recording_.start = field.text;
            zero_ = *time;
        } else if (*time - zero_ < seconds.back()) {
            // Summer time ended, or someone set the clock: go on one step after the last reading.
            double const step = seconds.size() > 1 ? seconds.back() - seconds[seconds.size() - 2] : 0;
            zero_ = *time - seconds.back() - step;
            Remark(field.column, "the clock was set back here; what follows is moved behind what came before");
        }
        recording_.end = field.text;
        seconds.push_back(*time - zero_);
    }

    std::optional<double> ReadNumber(CsvField const& field) const {
        if (field.text.empty()) {
            return std::nullopt;
        }
        double value = 0;
        char const* const last = field.text.data() + field.text.size();
        auto const [end, error] = std::from_chars(field.text.data(), last, value);
        if (error != std::errc{} || end != last || !std::isfinite(value)) {
            Fail(field, "\"" + field.text + "\" is no number (" + headings_[current_] + ")");
        }
        return value;
    }

    void ReadCurve(CsvField const& field) {
        if (field.text.empty() || !recording_.fanCurve.empty()) {
            return;
        }
        try {
            for (std::size_t start = 0; start < field.text.size();) {
                std::size_t const end = std::min(field.text.find(' ', start), field.text.size());
                recording_.fanCurve.push_back(ParseCurvePoint(field.text.substr(start, end - start)));
                start = end + 1;
            }
        } catch (UsageError const& error) {
            Fail(field, error.what());
        }
    }

    CsvReader csv_;
    Recording recording_;
    std::vector<CsvField> fields_;
    std::vector<Column> columns_;
    std::vector<std::string> headings_;
    std::size_t current_ = 0;
    double zero_ = 0;  // the time that counts as 0 seconds
};

}  // namespace

Recording ReadRecording(std::string_view text) {
    return Reader(text).Read();
}

}  // namespace gputune::tool

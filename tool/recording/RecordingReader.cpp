#include "tool/recording/RecordingReader.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>

#include "tool/recording/RecordingFormat.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Numbers.h"
#include "tool/values/Quoted.h"

namespace gputune::tool {

namespace {

// The sensor of this column. A sensor's unit, and with it the heading, depends on the vendor.
std::optional<Series> KnownSeries(std::string const& heading) {
    for (SensorName const& sensor : kSensorNames) {
        for (std::uint32_t const vendor : {GPUTUNE_VENDOR_AMD, GPUTUNE_VENDOR_INTEL, GPUTUNE_VENDOR_NVIDIA}) {
            Unit const unit = SensorUnit(sensor, vendor);
            if (heading == ColumnName(sensor.code, unit)) {
                return Series{sensor.code, sensor.text, unit, sensor.quantity, {}};
            }
        }
    }
    if (heading == ColumnName(kFrameRateName.code, Unit::FramesPerSecond)) {
        return Series{kFrameRateName.code, kFrameRateName.text, Unit::FramesPerSecond, Quantity::FrameRate, {}};
    }
    return std::nullopt;
}

// Removes that many digits from the text's beginning and puts their value in `number`.
bool TakeDigits(std::string_view& text, std::size_t digits, int& number) {
    std::string_view taken = text.substr(0, digits);
    if (taken.size() < digits || taken.find_first_not_of("0123456789") != std::string_view::npos) {
        return false;
    }
    number = TakeNumber<int>(taken).value_or(0);
    text.remove_prefix(digits);
    return true;
}

bool TakeOneOf(std::string_view& text, std::string_view characters) {
    bool const isOne = !text.empty() && characters.find(text.front()) != std::string_view::npos;
    text.remove_prefix(isOne ? 1 : 0);
    return isOne;
}

constexpr std::int64_t kMicroseconds = 1000000;  // of a second

// "2025-01-31T12:34:56.789" in microseconds. A blank may stand for the T, and a comma for the point; the fraction may
// be missing. Of nine decimals the last three are dropped.
std::optional<std::int64_t> ParseTime(std::string_view text) {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (!TakeDigits(text, 4, year) || !TakeOneOf(text, "-") || !TakeDigits(text, 2, month) || !TakeOneOf(text, "-") ||
        !TakeDigits(text, 2, day) || !TakeOneOf(text, "T ") || !TakeDigits(text, 2, hour) || !TakeOneOf(text, ":") ||
        !TakeDigits(text, 2, minute) || !TakeOneOf(text, ":") || !TakeDigits(text, 2, second)) {
        return std::nullopt;
    }
    int fraction = 0;
    if (TakeOneOf(text, ".,")) {
        std::size_t const digits = text.size();
        if (digits > 9 || digits == 0 || !TakeDigits(text, digits, fraction)) {
            return std::nullopt;
        }
        for (std::size_t missing = digits; missing < 9; ++missing) {
            fraction *= 10;
        }
        fraction /= 1000;
    }
    std::chrono::year_month_day const date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!text.empty() || !date.ok() || hour > 23 || minute > 59 || second > 60) {
        return std::nullopt;
    }
    std::int64_t const days = std::chrono::sys_days(date).time_since_epoch().count();
    return (((days * 24 + hour) * 60 + minute) * 60 + second) * kMicroseconds + fraction;
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
        if (std::find(unsureFan_.begin(), unsureFan_.end(), true) != unsureFan_.end()) {
            MarkFan();
        }
        std::erase_if(recording_.series, [](Series const& series) {
            return std::none_of(series.values.begin(), series.values.end(),
                                [](std::optional<double> const& value) { return value.has_value(); });
        });
        return std::move(recording_);
    }

private:
    // Reads a field of its column.
    using Column = std::function<void(CsvField const&)>;

    [[noreturn]] void Fail(CsvField const& field, std::string message) const {
        throw CsvError{csv_.LineNumber(), field.column, std::move(message)};
    }

    // Only the first ones are kept: a damaged recording may have one in every line.
    void Remark(std::size_t column, std::string message) {
        constexpr std::size_t kMostRemarks = 20;
        if (recording_.remarks.size() < kMostRemarks) {
            recording_.remarks.push_back({csv_.LineNumber(), column, std::move(message)});
        } else {
            ++recording_.furtherRemarks;
        }
    }

    void ReadHeading() {
        if (!csv_.Next(fields_)) {
            throw CsvError{1, 1, "the file is empty"};
        }
        bool hasTime = false;
        for (auto field = fields_.begin(); field != fields_.end(); ++field) {
            auto const isSame = [field](CsvField const& other) { return other.text == field->text; };
            if (std::any_of(fields_.begin(), field, isSame)) {
                Fail(*field, "there are two columns " + Quoted(field->text));
            }
            hasTime = hasTime || field->text == kTimeColumn;
            columns_.push_back(MakeColumn(*field));
            headings_.push_back(field->text);
        }
        if (!hasTime) {
            throw CsvError{csv_.LineNumber(), 1,
                           "there is no column \"time\": this is no recording of gputunectl, or its columns are "
                           "separated by neither commas nor semicolons"};
        }
        if (recording_.series.empty()) {
            throw CsvError{csv_.LineNumber(), 1, "there is no column of a sensor"};
        }
    }

    Column MakeColumn(CsvField const& field) {
        if (field.text == kTimeColumn) {
            return [this](CsvField const& time) { ReadTime(time); };
        }
        if (field.text == kAdapterColumn) {
            return [this](CsvField const& name) {
                recording_.adapterName = recording_.adapterName.empty() ? Printable(name.text) : recording_.adapterName;
            };
        }
        if (field.text == kFanCurveColumn) {
            return [this](CsvField const& curve) { ReadCurve(curve); };
        }
        if (field.text == kFanUnsureColumn) {
            return [this](CsvField const& doubt) { unsureFan_.push_back(!doubt.text.empty()); };
        }
        if (std::optional<Series> series = KnownSeries(field.text)) {
            std::size_t const index = recording_.series.size();
            recording_.series.push_back(std::move(*series));
            return
                [this, index](CsvField const& value) { recording_.series[index].values.push_back(ReadNumber(value)); };
        }
        Remark(field.column, "the column " + Quoted(field.text) + " is not known, and is left out");
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
        std::optional<std::int64_t> const time = ParseTime(field.text);
        if (!time) {
            Fail(field, Quoted(field.text) + " is no time; expected is the form 2025-01-31T12:34:56.789");
        }
        if (recording_.seconds.empty()) {
            recording_.start = field.text;
            zero_ = *time;
        } else if (*time - zero_ < last_) {
            // Summer time ended, or someone set the clock: this reading counts as one step after the last one.
            zero_ = *time - last_ - step_;
            Remark(field.column, "the clock was set back here; what follows is moved behind what came before");
        }
        recording_.end = field.text;
        step_ = *time - zero_ - last_;
        last_ = *time - zero_;
        recording_.seconds.push_back(static_cast<double>(last_) / kMicroseconds);
    }

    std::optional<double> ReadNumber(CsvField const& field) {
        if (field.text.empty()) {
            return std::nullopt;
        }
        std::string text = field.text;
        std::size_t const mark = text.find_first_of(".,");
        if (mark != std::string::npos && TakesDecimalMark(text[mark])) {
            text[mark] = '.';
        } else if (mark != std::string::npos) {
            FailNumber(field);
        }
        std::optional<double> const value = ParseNumber<double>(text);
        if (!value || !std::isfinite(*value)) {
            FailNumber(field);
        }
        return value;
    }

    [[noreturn]] void FailNumber(CsvField const& field) const {
        Fail(field, Quoted(field.text) + " is no number (" + headings_[current_] + ")");
    }

    // Between commas the decimal mark is a point. Between semicolons it is a point or a comma, but the same in the
    // whole file: if both occur, one of them separates thousands.
    bool TakesDecimalMark(char mark) {
        if (decimalMark_ == 0) {
            decimalMark_ = csv_.Separator() == ';' ? mark : '.';
        }
        return mark == decimalMark_;
    }

    void MarkFan() {
        for (Series& series : recording_.series) {
            if (series.code == kSensorNames[GPUTUNE_HWM_FAN_SPEED_RPM].code) {
                series.unsure = std::move(unsureFan_);
                return;
            }
        }
    }

    void ReadCurve(CsvField const& field) {
        if (field.text.empty() || !recording_.fanCurve.empty()) {
            return;
        }
        try {
            for (std::size_t start = 0; start < field.text.size();) {
                std::size_t const end = std::min(field.text.find(' ', start), field.text.size());
                recording_.fanCurve.push_back(ParseFanPoint(Printable(field.text.substr(start, end - start))));
                start = end + 1;
            }
        } catch (FanCurveError const& error) {
            Fail(field, error.what());
        }
    }

    CsvReader csv_;
    Recording recording_;
    std::vector<CsvField> fields_;
    std::vector<Column> columns_;
    std::vector<std::string> headings_;
    std::size_t current_ = 0;
    std::vector<bool> unsureFan_;
    char decimalMark_ = 0;  // 0: none was seen
    // In microseconds:
    std::int64_t zero_ = 0;  // the time that counts as 0
    std::int64_t last_ = 0;  // of the last reading, since zero_
    std::int64_t step_ = 0;  // from the reading before the last one to the last one
};

}  // namespace

Recording ReadRecording(std::string_view text) {
    return Reader(text).Read();
}

}  // namespace gputune::tool

#include "tool/hold/ReadingJudge.h"

#include <algorithm>

#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

constexpr double kLongestDuration = 2;  // seconds
constexpr double kLowest = 0;           // degrees Celsius
constexpr double kHighest = 125;
constexpr double kSteepest = 40;        // kelvins in a second
constexpr double kUnchangedLimit = 60;  // seconds
// As many points of load more, for as many seconds, warm every board.
constexpr double kRise = 20;
constexpr double kRiseTime = 30;

}  // namespace

void ReadingJudge::Reset() {
    last_.reset();
    unchanged_.clear();
}

std::optional<std::string> ReadingJudge::Judge(Reading const& reading) {
    if (!reading.temperature) {
        return "the temperature was not read";
    }
    std::string const shown = WithUnit(*reading.temperature, Unit::Celsius);
    if (reading.duration > kLongestDuration) {
        return "the temperature came late, after " + FormatNumber(reading.duration) + " s";
    }
    if (!(*reading.temperature >= kLowest && *reading.temperature <= kHighest)) {
        return "a temperature of " + shown + " is not plausible";
    }
    std::optional<std::string> jump = JudgeChange(reading);
    if (!last_ || *last_->temperature != *reading.temperature) {
        unchanged_.clear();
    }
    last_ = reading;
    unchanged_.push_back(reading);
    // Nothing older than what IsStuck looks at.
    while (unchanged_.size() > 2 && unchanged_[1].time <= reading.time - kUnchangedLimit) {
        unchanged_.pop_front();
    }
    if (jump) {
        return jump;
    }
    if (IsStuck()) {
        return "the temperature has stood at " + shown + " for a minute while the load rose";
    }
    return std::nullopt;
}

std::optional<std::string> ReadingJudge::JudgeChange(Reading const& reading) const {
    if (!last_) {
        return std::nullopt;
    }
    // Two readings of one second may differ as much as those of a whole one.
    double const seconds = std::max(reading.time - last_->time, 1.0);
    double const change = *reading.temperature - *last_->temperature;
    if (change <= kSteepest * seconds && change >= -kSteepest * seconds) {
        return std::nullopt;
    }
    return "the temperature jumped from " + WithUnit(*last_->temperature, Unit::Celsius) + " to " +
           WithUnit(*reading.temperature, Unit::Celsius);
}

bool ReadingJudge::IsStuck() const {
    double const end = unchanged_.back().time;
    if (end - unchanged_.front().time < kUnchangedLimit) {
        return false;
    }
    // The average load before and in the last seconds.
    double sums[2] = {};
    int counts[2] = {};
    for (Reading const& reading : unchanged_) {
        if (reading.load) {
            std::size_t const part = reading.time > end - kRiseTime ? 1 : 0;
            sums[part] += *reading.load;
            ++counts[part];
        }
    }
    return counts[0] > 0 && counts[1] > 0 && sums[1] / counts[1] >= sums[0] / counts[0] + kRise;
}

}  // namespace gputune::tool

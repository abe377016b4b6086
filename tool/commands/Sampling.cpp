#include "tool/commands/Sampling.h"

#include <windows.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tool/recording/RecordingWriter.h"
#include "tool/values/Duration.h"
#include "tool/values/Errors.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

// Checks a time and turns it into a plain number of seconds.
CLI::Validator TimeBetween(double minimum, double maximum) {
    return {[minimum, maximum](std::string& text) {
                std::optional<double> const value = ParseSeconds(text);
                if (!value) {
                    return text + " is not a number of seconds: write 0.5, 90s, 10m or 2h";
                }
                if (*value < minimum || *value > maximum) {
                    return text + " is not in range: " + FormatNumber(minimum) + " to " + FormatNumber(maximum) +
                           " seconds";
                }
                text = FormatExactNumber(*value);
                return std::string();
            },
            ""};
}

}  // namespace

void AddSecondsOption(CLI::App& command, char const* name, double& seconds, double minimum, double maximum,
                      std::string const& description) {
    command.add_option(name, seconds, description)->transform(TimeBetween(minimum, maximum))->type_name("SECONDS");
}

void AddSecondsOption(CLI::App& command, char const* name, std::optional<double>& seconds, double minimum,
                      double maximum, std::string const& description) {
    command.add_option(name, seconds, description)->transform(TimeBetween(minimum, maximum))->type_name("SECONDS");
}

void AddSamplingOptions(CLI::App& command, SamplingOptions& options) {
    AddSecondsOption(command, "--interval", options.interval, 0.05, 86400.0,
                     "Between readings: seconds, 0.05 to 86400, or such as 90s, 10m; default 1");
    command.add_flag(
        "--frame-rate", options.frameRate,
        "Read the driver's frame metrics, too (AMD Overdrive8). Some drivers have crashed programs that do");
}

std::string Timestamp() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    char text[40];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02uT%02u:%02u:%02u.%03u", unsigned{now.wYear}, unsigned{now.wMonth},
                  unsigned{now.wDay}, unsigned{now.wHour}, unsigned{now.wMinute}, unsigned{now.wSecond},
                  unsigned{now.wMilliseconds});
    return text;
}

TakenSample TakeSample(Session const& session, SamplingOptions const& options) {
    TakenSample sample{.time = Timestamp(), .readings = session.ReadSensors(), .frameRate = std::nullopt};
    if (options.frameRate) {
        int const rate = session.Api().GetFrameRate();
        if (rate != -1) {
            sample.frameRate = rate;
        }
    }
    return sample;
}

RecordedBoard DescribeBoard(Session const& session, SamplingOptions const& options) {
    return {.vendor = session.Vendor(),
            .frameRate = options.frameRate,
            .name = session.AdapterName(),
            .fanCurve = FanCurveOf(session.Api().ReadFanSetting()),
            .fanCanBeUnsure = session.FanCanBeUnsure()};
}

void RequireOwnOutput(std::string const& path, GlobalOptions const& options) {
    if (!RecordingWriter::IsStandardOutput(path)) {
        return;
    }
    if (options.json) {
        throw UsageError("--json and values on standard output would mix: name a file instead of \"-\".");
    }
    if (options.LogsToOutput()) {
        throw UsageError("A log and values on standard output would mix: use --log file.");
    }
}

Schedule::Schedule(double interval)
    : step_(static_cast<std::uint64_t>(std::llround(interval * 1000))), start_(GetTickCount64()), next_(start_) {}

unsigned long Schedule::Remaining() const {
    std::uint64_t const now = GetTickCount64();
    return next_ > now ? static_cast<unsigned long>(next_ - now) : 0;
}

void Schedule::Advance() {
    next_ = std::max<std::uint64_t>(next_ + step_, GetTickCount64());
}

}  // namespace gputune::tool

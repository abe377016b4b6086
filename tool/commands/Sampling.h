// Readings at regular moments, for `monitor` and `record`.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tool/board/Session.h"
#include "tool/recording/RecordingFormat.h"

namespace CLI {
class App;
}

namespace gputune::tool {

struct SamplingOptions {
    double interval = 1.0;  // seconds
    bool frameRate = false;
};

// --interval and --frame-rate.
void AddSamplingOptions(CLI::App& command, SamplingOptions& options);
// An option that takes a time (values/Duration.h) within this range, in seconds.
void AddSecondsOption(CLI::App& command, char const* name, double& seconds, double minimum, double maximum,
                      std::string const& description);
void AddSecondsOption(CLI::App& command, char const* name, std::optional<double>& seconds, double minimum,
                      double maximum, std::string const& description);

struct TakenSample {
    std::string time;  // local, "2025-01-31T12:34:56.789"
    Readings readings;
    std::optional<int> frameRate;  // nothing when it was not asked for or cannot be read
};

// Now: local, "2025-01-31T12:34:56.789".
std::string Timestamp();
TakenSample TakeSample(Session const& session, SamplingOptions const& options);
RecordedBoard DescribeBoard(Session const& session, SamplingOptions const& options);

// Throws UsageError when lines of a recording and something else would both go to standard output. `path` is that of
// RecordingWriter.
void RequireOwnOutput(std::string const& path, GlobalOptions const& options);

// The moments of the readings: multiples of the interval from now on, however long the readings take. Counts
// milliseconds of the system's steady clock.
class Schedule {
public:
    explicit Schedule(double interval);

    // The milliseconds until the next moment; 0 when it has come.
    unsigned long Remaining() const;
    // To be called when the moment has come. The next one is an interval later; moments that were missed are skipped.
    void Advance();
    // Seconds from the first moment to the next one.
    double Elapsed() const { return static_cast<double>(next_ - start_) / 1000; }

private:
    std::uint64_t step_;
    std::uint64_t start_;
    std::uint64_t next_;
};

}  // namespace gputune::tool

#include "tool/serve/PageData.h"

#include <cmath>

#include "tool/output/SensorTexts.h"

namespace gputune::tool {

namespace {

// Whole milliseconds; a time of 0 is none.
Value TimeValue(double seconds) {
    return seconds > 0 ? Value{std::round(seconds * 1000) / 1000} : Value{};
}

Section BoardSection(std::optional<BoardFacts> const& board) {
    Section section{.key = "board", .available = board.has_value()};
    if (board) {
        section.fields = {{"vendor", "", VendorName(board->vendor).code},
                          {"api", "", ApiName(board->api).code},
                          {"interface", "", ApiName(board->api).text},
                          {"adapter", "", IntValue(board->adapter)},
                          {"name", "", TextValue(board->name)}};
    }
    return section;
}

Section ProblemSection(Snapshot const& snapshot) {
    Section section{.key = "problem", .available = !snapshot.problem.empty()};
    section.fields = {{"code", "", TextValue(snapshot.problemCode)}, {"message", "", snapshot.problem}};
    return section;
}

// Intel's raw counter is replaced by the load that was made of it.
Section Sensors(Snapshot const& snapshot) {
    std::uint32_t const vendor = snapshot.board ? snapshot.board->vendor : std::uint32_t{GPUTUNE_VENDOR_UNKNOWN};
    Section section = SensorSection(snapshot.sample ? snapshot.sample->readings : Readings{}, vendor, true);
    section.available = snapshot.sample.has_value();
    if (snapshot.sample && snapshot.sample->load) {
        Field& load = section.fields.at(GPUTUNE_HWM_GPU_LOAD);
        load.value = *snapshot.sample->load * 100;
        load.unit = Unit::Percent;
    }
    return section;
}

Section SettingsSection(std::optional<Sample> const& sample) {
    Section section{.key = "settings", .available = sample.has_value()};
    if (sample) {
        BoardSettings const& shown = sample->shown;
        section.fields = {{"power_limit", "", ToValue(shown.powerLimit), Unit::Percent},
                          {"temperature_limit", "", ToValue(shown.temperatureLimit), Unit::Celsius},
                          {"gpu_clock", "", ToValue(shown.gpuClock), Unit::Megahertz},
                          {"gpu_voltage", "", ToValue(shown.gpuVoltage), Unit::Millivolt},
                          {"memory_clock", "", ToValue(shown.memoryClock), Unit::Megahertz}};
        Grid curve{"fan_curve", "", {{"temperature", "", Unit::Celsius}, {"speed", "", Unit::Percent}}, {}};
        for (FanTablePoint const& point : shown.fanCurve) {
            curve.rows.push_back({std::int64_t{point.FanTemperature}, std::int64_t{point.FanSpeed}});
        }
        section.grids.push_back(std::move(curve));
    }
    return section;
}

Section HistoryOfFailures(Snapshot const& snapshot) {
    Grid failures{"read_failures", "", {{"call", ""}, {"code", ""}, {"count", ""}}, {}};
    for (auto const& [call, count] : snapshot.readFailures) {
        failures.rows.push_back({call.first, call.second, static_cast<std::int64_t>(count)});
    }
    return {.fields = {{"worker_restarts", "", static_cast<std::int64_t>(snapshot.workerRestarts)}},
            .grids = {std::move(failures)}};
}

Result ToResult(Snapshot const& snapshot, double now) {
    Result result;
    result.Add({.fields = {{"time_seconds", "", TimeValue(now)},
                           {"start_time_seconds", "", TimeValue(snapshot.startTime)},
                           {"last_sample_time_seconds", "", TimeValue(snapshot.lastSampleTime)},
                           {"up", "", snapshot.sample.has_value()},
                           {"powered", "", snapshot.powerIsKnown ? Value{!snapshot.isPoweredOff} : Value{}}}});
    result.Add(ProblemSection(snapshot));
    result.Add(BoardSection(snapshot.board));
    result.Add(Sensors(snapshot));
    result.Add(SettingsSection(snapshot.sample));
    result.Add(HistoryOfFailures(snapshot));
    return result;
}

}  // namespace

std::string ReadingsJson(Snapshot const& snapshot, double now) {
    return ToResult(snapshot, now).Json();
}

std::string EventJson(Snapshot const& snapshot, double now) {
    std::string json = ToResult(snapshot, now).Json(false);
    json.pop_back();
    return json;
}

}  // namespace gputune::tool

#include "tool/serve/Metrics.h"

#include <cmath>

#include "tool/values/Names.h"
#include "tool/values/Numbers.h"
#include "tool/values/Quoted.h"

namespace gputune::tool {

namespace {

using MetricPoints = std::vector<MetricPoint>;
using MetricLabels = std::vector<std::pair<char const*, std::string>>;

void AddPoint(MetricPoints& points, MetricLabels labels, double value, char const* suffix = "") {
    if (std::isfinite(value)) {
        points.push_back({std::move(labels), value, suffix});
    }
}

// From the units of the library's functions to base units. Division where it gives the nearest number.
double Unchanged(double value) {
    return value;
}
double FromMegahertz(double value) {
    return std::round(value * 1e6);
}
double FromPercent(double value) {
    return value / 100;
}
double FromPercentOfDefault(double value) {
    return (100 + value) / 100;
}
double FromMegabytes(double value) {
    return value * 1048576;
}
double FromMillivolts(double value) {
    return value / 1000;
}

using Conversion = double (*)(double);

// Nothing of a sensor that was not read.
void AddReading(Snapshot const& snapshot, MetricPoints& points, GputuneHwmKey key, Conversion convert,
                MetricLabels labels = {}) {
    if (snapshot.sample && snapshot.sample->readings[key]) {
        AddPoint(points, std::move(labels), convert(FewestDigits(*snapshot.sample->readings[key])));
    }
}

template <GputuneHwmKey Key, Conversion Convert>
void CollectReading(Snapshot const& snapshot, MetricPoints& points) {
    AddReading(snapshot, points, Key, Convert);
}

void CollectBoard(Snapshot const& snapshot, MetricPoints& points) {
    if (!snapshot.board) {
        return;
    }
    BoardFacts const& board = *snapshot.board;
    MetricLabels labels = {{"board", BoardLabel(board)},
                           {"vendor", VendorName(board.vendor).code},
                           {"api", ApiName(board.api).code},
                           {"version", GPUTUNE_VERSION}};
    if (!board.name.empty()) {
        labels.emplace_back("name", Printable(board.name));
    }
    AddPoint(points, std::move(labels), 1);
}

void CollectUp(Snapshot const& snapshot, MetricPoints& points) {
    AddPoint(points, {}, snapshot.sample ? 1 : 0);
}

void CollectPowered(Snapshot const& snapshot, MetricPoints& points) {
    if (snapshot.powerIsKnown) {
        AddPoint(points, {}, snapshot.isPoweredOff ? 0 : 1);
    }
}

void CollectLastSampleTime(Snapshot const& snapshot, MetricPoints& points) {
    if (snapshot.lastSampleTime != 0) {
        AddPoint(points, {}, snapshot.lastSampleTime);
    }
}

void CollectTemperatures(Snapshot const& snapshot, MetricPoints& points) {
    AddReading(snapshot, points, GPUTUNE_HWM_GPU_TEMPERATURE, Unchanged, {{"sensor", "gpu"}});
    AddReading(snapshot, points, GPUTUNE_HWM_GPU_HOTSPOT_TEMPERATURE, Unchanged, {{"sensor", "hotspot"}});
    AddReading(snapshot, points, GPUTUNE_HWM_GPU_MEMORY_TEMPERATURE, Unchanged, {{"sensor", "memory"}});
}

void CollectTemperatureLimit(Snapshot const& snapshot, MetricPoints& points) {
    AddReading(snapshot, points, GPUTUNE_HWM_TEMPERATURE_LIMIT, Unchanged);
    if (points.empty() && snapshot.sample && snapshot.sample->shown.temperatureLimit) {
        AddPoint(points, {}, *snapshot.sample->shown.temperatureLimit);
    }
}

void CollectClocks(Snapshot const& snapshot, MetricPoints& points) {
    AddReading(snapshot, points, GPUTUNE_HWM_GPU_CORE_CLOCK, FromMegahertz, {{"domain", "core"}});
    AddReading(snapshot, points, GPUTUNE_HWM_GPU_MEMORY_CLOCK, FromMegahertz, {{"domain", "memory"}});
}

void CollectFanSpeed(Snapshot const& snapshot, MetricPoints& points) {
    if (snapshot.sample && !snapshot.sample->readings.fanUnsure) {
        AddReading(snapshot, points, GPUTUNE_HWM_FAN_SPEED_RPM, Unchanged);
    }
}

bool LoadIsCounter(Snapshot const& snapshot) {
    return snapshot.board && snapshot.board->vendor == GPUTUNE_VENDOR_INTEL;
}

void CollectLoads(Snapshot const& snapshot, MetricPoints& points) {
    if (LoadIsCounter(snapshot)) {
        if (snapshot.sample && snapshot.sample->load) {
            AddPoint(points, {{"engine", "gpu"}}, *snapshot.sample->load);
        }
    } else {
        AddReading(snapshot, points, GPUTUNE_HWM_GPU_LOAD, FromPercent, {{"engine", "gpu"}});
    }
    AddReading(snapshot, points, GPUTUNE_HWM_MEMORY_CONTROLLER_LOAD, FromPercent, {{"engine", "memory_controller"}});
}

void CollectActivity(Snapshot const& snapshot, MetricPoints& points) {
    if (LoadIsCounter(snapshot) && snapshot.sample && !snapshot.sample->load) {
        AddReading(snapshot, points, GPUTUNE_HWM_GPU_LOAD, Unchanged);
    }
}

void CollectPowers(Snapshot const& snapshot, MetricPoints& points) {
    AddReading(snapshot, points, GPUTUNE_HWM_GPU_POWER, Unchanged, {{"domain", "gpu"}});
    AddReading(snapshot, points, GPUTUNE_HWM_VDDC_POWER, Unchanged, {{"domain", "vddc"}});
    AddReading(snapshot, points, GPUTUNE_HWM_VDDCI_POWER, Unchanged, {{"domain", "vddci"}});
}

void CollectVoltages(Snapshot const& snapshot, MetricPoints& points) {
    AddReading(snapshot, points, GPUTUNE_HWM_VDDC, FromMillivolts, {{"domain", "core"}});
}

void CollectMemory(Snapshot const& snapshot, MetricPoints& points) {
    AddReading(snapshot, points, GPUTUNE_HWM_MEMORY_USAGE, FromMegabytes, {{"kind", "total"}});
    AddReading(snapshot, points, GPUTUNE_HWM_MEMORY_USAGE_DEDICATED, FromMegabytes, {{"kind", "dedicated"}});
    AddReading(snapshot, points, GPUTUNE_HWM_MEMORY_USAGE_DYNAMIC, FromMegabytes, {{"kind", "dynamic"}});
}

void CollectPowerLimit(Snapshot const& snapshot, MetricPoints& points) {
    if (snapshot.sample && snapshot.sample->shown.powerLimit) {
        AddPoint(points, {}, FromPercentOfDefault(*snapshot.sample->shown.powerLimit));
    }
}

void CollectReadFailures(Snapshot const& snapshot, MetricPoints& points) {
    for (auto const& [call, count] : snapshot.readFailures) {
        AddPoint(points, {{"call", call.first}, {"code", call.second}}, static_cast<double>(count));
    }
}

void CollectRestarts(Snapshot const& snapshot, MetricPoints& points) {
    AddPoint(points, {}, static_cast<double>(snapshot.workerRestarts));
}

void CollectDurations(Snapshot const& snapshot, MetricPoints& points) {
    DurationHistogram const& durations = snapshot.durations;
    double count = 0;
    for (std::size_t i = 0; i < durations.counts.size(); ++i) {
        count += static_cast<double>(durations.counts[i]);
        std::string bound = "+Inf";
        if (i < DurationHistogram::kBounds.size()) {
            bound = FormatExactNumber(DurationHistogram::kBounds[i]);
            // OpenMetrics asks for the point; the series are to be the same in both formats.
            bound += bound.find('.') == std::string::npos ? ".0" : "";
        }
        AddPoint(points, {{"le", bound}}, count, "_bucket");
    }
    AddPoint(points, {}, durations.sum, "_sum");
    AddPoint(points, {}, count, "_count");
}

void CollectStartTime(Snapshot const& snapshot, MetricPoints& points) {
    AddPoint(points, {}, snapshot.startTime);
}

constexpr MetricType kGauge = MetricType::Gauge;

constexpr Metric kMetrics[] = {
    {"gputune_board_info", MetricType::Info, "", "board, vendor, api, version, name",
     "The board; absent until it was opened.", "what the worker opened, and gputune's version", CollectBoard},
    {"gputune_up", kGauge, "", "", "Whether the last sample succeeded, as a whole or in part.", "the exporter",
     CollectUp},
    {"gputune_powered", kGauge, "", "", "Whether the board's device has power; absent where Windows does not tell.",
     "Windows' device manager", CollectPowered},
    {"gputune_last_sample_timestamp_seconds", kGauge, "seconds", "",
     "When a sample succeeded last, since 1970; absent before the first.", "the exporter's clock",
     CollectLastSampleTime},
    {"gputune_temperature_celsius", kGauge, "celsius", "sensor: gpu, hotspot, memory", "Temperature.",
     "sensors gpu_temperature, gpu_hotspot_temperature, gpu_memory_temperature", CollectTemperatures},
    {"gputune_temperature_limit_celsius", kGauge, "celsius", "", "Temperature at which the board slows down.",
     "sensor temperature_limit, or else the limit that the board shows", CollectTemperatureLimit},
    {"gputune_clock_hertz", kGauge, "hertz", "domain: core, memory", "Clock.",
     "sensors gpu_core_clock, gpu_memory_clock", CollectClocks},
    {"gputune_cpu_clock_hertz", kGauge, "hertz", "", "Clock of the processor.", "sensor cpu_frequency",
     CollectReading<GPUTUNE_HWM_CPU_FREQUENCY, FromMegahertz>},
    {"gputune_cpu_load_ratio", kGauge, "ratio", "", "Load of the processor, from 0 to 1.", "sensor cpu_usage",
     CollectReading<GPUTUNE_HWM_CPU_USAGE, FromPercent>},
    {"gputune_fan_speed_rpm", kGauge, "rpm", "",
     "Speed of the fan in revolutions per minute; absent where a 0 may be wrong.", "sensor fan_speed", CollectFanSpeed},
    {"gputune_fan_duty_ratio", kGauge, "ratio", "", "Speed of the fan, from 0 to 1 of its highest.", "sensor fan_duty",
     CollectReading<GPUTUNE_HWM_FAN_SPEED_PERCENT, FromPercent>},
    {"gputune_load_ratio", kGauge, "ratio", "engine: gpu, memory_controller", "Load, from 0 to 1.",
     "sensors gpu_load (Intel: made of the activity counter), memory_controller_load", CollectLoads},
    {"gputune_activity_counter_total", MetricType::Counter, "", "",
     "Intel's activity counter in the driver's unit, where no load could be made of it.", "sensor gpu_load",
     CollectActivity},
    {"gputune_power_watts", kGauge, "watts", "domain: gpu, vddc, vddci", "Power draw.",
     "sensors gpu_power, vddc_power, vddci_power", CollectPowers},
    {"gputune_vrm_efficiency_ratio", kGauge, "ratio", "", "Efficiency of the voltage regulators, from 0 to 1.",
     "sensor vrm_efficiency", CollectReading<GPUTUNE_HWM_VRM_EFFICIENCY, FromPercent>},
    {"gputune_voltage_volts", kGauge, "volts", "domain: core", "Voltage.", "sensor vddc", CollectVoltages},
    {"gputune_memory_used_bytes", kGauge, "bytes", "kind: total, dedicated, dynamic", "Graphics memory in use.",
     "sensors memory_usage, memory_usage_dedicated, memory_usage_dynamic; a megabyte is 1048576 bytes", CollectMemory},
    {"gputune_power_limit_ratio", kGauge, "ratio", "", "Power limit; 1 is the board's default.",
     "the power limit that the board shows", CollectPowerLimit},
    {"gputune_tdp_limit_ratio", kGauge, "ratio", "", "TDP limit; 1 is the board's default.", "sensor tdp_limit",
     CollectReading<GPUTUNE_HWM_TDP_LIMIT, FromPercentOfDefault>},
    {"gputune_read_failures_total", MetricType::Counter, "", "call, code",
     "Calls of the vendor's library that failed in samples.", "the library's log", CollectReadFailures},
    {"gputune_worker_restarts_total", MetricType::Counter, "", "",
     "Workers that crashed, hung or could not open the board, and were replaced.", "the exporter", CollectRestarts},
    {"gputune_sample_duration_seconds", MetricType::Histogram, "seconds", "le",
     "How long the samples took that the worker answered.", "the exporter's clock", CollectDurations},
    {"gputune_start_time_seconds", kGauge, "seconds", "", "When the exporter was started, since 1970.",
     "the exporter's clock", CollectStartTime},
};

}  // namespace

char const* MetricTypeName(MetricType type) {
    switch (type) {
        case MetricType::Gauge:
            return "gauge";
        case MetricType::Counter:
            return "counter";
        case MetricType::Histogram:
            return "histogram";
        case MetricType::Info:
            break;
    }
    return "info";
}

std::span<Metric const> Metrics() {
    return kMetrics;
}

}  // namespace gputune::tool

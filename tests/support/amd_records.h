// The records of the AMD library that tests report and look at, with the layout that AMD publishes, entered by hand.
// All fields are 32 bits wide, in any process, unless they say otherwise.
#pragma once

#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include "Machine.h"

namespace gputune::test {

// A record whose fields are `first` and the numbers that follow, to tell which of them is looked at.
template <class Record>
Record Numbered(int first) {
    Record record;
    auto* const fields = reinterpret_cast<int*>(&record);
    std::iota(fields, fields + sizeof record / sizeof(int), first);
    return record;
}

// ---- The binding ----

// A record of the adapter list. Texts have room for 256 characters, and no terminator when they fill it.
struct AdapterRecord {
    int index = 5;
    std::string udid = {};
    int bus = 3;
    std::string name = {};
    std::string displayName = {};
};

// Of one adapter after the other.
struct ActiveStatus {
    static constexpr Place kReadBy = {"ADL2_Adapter_Active_Get", 2};
    int status = 1;
};

// Two more numbers stand before it, whether Overdrive is supported and enabled.
struct OverdriveVersion {
    static constexpr Place kReadBy = {"ADL2_Overdrive_Caps", 4};
    int version = 0;
};

// ---- Overdrive 5 ----

constexpr int kGpuDomain = 1;

struct ThermalController {
    static constexpr Place kReadBy = {"ADL2_Overdrive5_ThermalDevices_Enum", 3};
    int size = 16;
    int domain = kGpuDomain;
    int index = 0;
    int flags = 0;
};

constexpr int kPercent = 1;
constexpr int kRpm = 2;
constexpr int kUserDefined = 1;

struct FanSpeed {
    static constexpr Place kReadBy = {"ADL2_Overdrive5_FanSpeed_Get", 3};
    static constexpr char const* kSentBy = "ADL2_Overdrive5_FanSpeed_Set";
    int size = 16;
    int type = kRpm;
    int speed = 0;
    int flags = 0;
    bool operator==(FanSpeed const&) const = default;
};

// ---- OverdriveN ----

constexpr int kModeCurrent = 0;
constexpr int kModeDefault = 1;
constexpr int kModeAutomatic = 2;
constexpr int kModeManual = 3;

struct Range {
    int mode = 0;
    int minimum = 0;
    int maximum = 0;
    int step = 0;
    int standard = 0;
};

// Those of OverdriveNBoard.
struct Capabilities {
    static constexpr Place kReadBy = {"ADL2_OverdriveN_CapabilitiesX2_Get", 2};
    int levels = 3;
    int flags = 0;
    Range engineClock = {0, 30000, 200000, 100, 136600};  // 10 kHz
    Range memoryClock = {0, 30000, 225000, 100, 200000};  // 10 kHz
    Range voltage = {0, 800, 1175, 6, 1150};              // mV
    Range power = {0, -50, 50, 1, 0};                     // percent
    Range temperature = {0, 50, 90, 1, 75};
    Range fanTemperature = {0, 25, 105, 1, 70};
    Range fanSpeed = {0, 400, 3300, 100, 1600};  // RPM
    Range minimumPerformanceClock = {0, 30000, 200000, 100, 90000};
    Range throttleNotification = {0, 0, 1, 1, 0};
    Range automaticSystemClock = {0, 0, 1, 1, 0};
};
static_assert(sizeof(Capabilities) == 208);

struct Level {
    int clock = 0;    // 10 kHz
    int voltage = 0;  // mV
    int enabled = 1;
    int control = 0;
    bool operator==(Level const&) const = default;
};

enum class Clock { Engine, Memory };

// A head of three fields, and the levels. The driver writes the levels alone.
template <Clock clock>
struct LevelTable {
    static constexpr int kHead = 12;
    static constexpr Place kReadBy = {
        clock == Clock::Engine ? "ADL2_OverdriveN_SystemClocksX2_Get" : "ADL2_OverdriveN_MemoryClocksX2_Get", 2, kHead};
    static constexpr char const* kSentBy =
        clock == Clock::Engine ? "ADL2_OverdriveN_SystemClocksX2_Set" : "ADL2_OverdriveN_MemoryClocksX2_Set";

    int mode = kModeCurrent;
    std::vector<Level> levels = {};
    int count = static_cast<int>(levels.size());                         // as the head has it
    int size = kHead + static_cast<int>(levels.size() * sizeof(Level));  // likewise

    static LevelTable From(Call const& call) {
        LevelTable table{.mode = call.Int(4), .levels = {}, .count = call.Int(8), .size = call.Int(0)};
        for (std::size_t at = kHead; at + sizeof(Level) <= call.record.size(); at += sizeof(Level)) {
            table.levels.push_back({call.Int(at), call.Int(at + 4), call.Int(at + 8), call.Int(at + 12)});
        }
        return table;
    }
    bool operator==(LevelTable const&) const = default;

    friend Bytes BytesOf(LevelTable const& table) { return BytesOf(table.levels); }
    friend void PrintTo(LevelTable const& table, std::ostream* out) {
        *out << table.size << " bytes, mode " << table.mode << ", " << table.count << " levels:";
        for (Level const& level : table.levels) {
            *out << " {" << level.clock << ", " << level.voltage << ", " << level.enabled << ", " << level.control
                 << "}";
        }
    }
};
using EngineLevels = LevelTable<Clock::Engine>;
using MemoryLevels = LevelTable<Clock::Memory>;

struct FanControl {
    static constexpr Place kReadBy = {"ADL2_OverdriveN_FanControl_Get", 2};
    static constexpr char const* kSentBy = "ADL2_OverdriveN_FanControl_Set";
    int mode = 0;
    int controlMode = 0;
    int currentMode = 0;
    int currentSpeed = 0;  // RPM, as are the target and the limit
    int targetSpeed = 0;
    int targetTemperature = 0;
    int minimumPerformanceClock = 0;
    int minimumLimit = 0;
    bool operator==(FanControl const&) const = default;
};

struct PowerLimits {
    static constexpr Place kReadBy = {"ADL2_OverdriveN_PowerLimit_Get", 2};
    static constexpr char const* kSentBy = "ADL2_OverdriveN_PowerLimit_Set";
    int mode = 0;
    int power = 0;  // percent
    int temperature = 0;
    bool operator==(PowerLimits const&) const = default;
};

struct PerformanceStatus {
    static constexpr Place kReadBy = {"ADL2_OverdriveN_PerformanceStatus_Get", 2};
    int coreClock = 0;    // 10 kHz
    int memoryClock = 0;  // 10 kHz
    int otherClocks[4] = {};
    int activity = 0;  // percent
    int levels[6] = {};
    int bus[3] = {};
    int voltages[2] = {};
};
static_assert(sizeof(PerformanceStatus) == 72);

struct Temperature {
    static constexpr Place kReadBy = {"ADL2_OverdriveN_Temperature_Get", 3};
    int millidegrees = 0;
};

// ---- Overdrive8 ----

constexpr int kSettings = 39;

// Some of their numbers. The curve of the fan has a temperature (19, 21 and so on) before each speed.
namespace setting {
enum : int {
    kGpuMaximum = 0,
    kCurveTop = 6,
    kMemoryClock = 8,
    kPower = 9,
    kFanMinimum = 10,
    kAcousticLimit = 11,
    kTargetTemperature = 12,
    kFirstFanSpeed = 20,
    kLastFanSpeed = 28,
    kPowerMode = 36
};
}  // namespace setting

struct SettingRange {
    int feature = 0;
    int minimum = 0;
    int maximum = 0;
    int standard = 0;
};

// Parts of what the newer function reports.
struct FeatureFlags {
    static constexpr Place kReadBy = {"ADL2_Overdrive8_Init_SettingX2_Get", 2};
    int flags = 0;
};
struct RangeCount {
    static constexpr Place kReadBy = {"ADL2_Overdrive8_Init_SettingX2_Get", 3};
    int count = kSettings;
};

struct SettingRequest {
    static constexpr char const* kSentBy = "ADL2_Overdrive8_Setting_Set";
    struct Setting {
        int value;
        int requested;
        int reset;
    };
    int count;
    Setting settings[kSettings];
};
static_assert(sizeof(SettingRequest) == 472);

namespace sensor {
enum : int { kGpuClock = 1, kMemoryClock = 2, kTemperature = 8, kFanSpeed = 14, kLoad = 19, kHotSpot = 27, kLast = 45 };
}  // namespace sensor

struct SensorLog {
    static constexpr Place kReadBy = {"ADL2_New_QueryPMLogData_Get", 2};
    struct Sensor {
        int supported = 0;
        int value = 0;
    };
    int size = 0;
    Sensor sensors[256] = {};
};
static_assert(sizeof(SensorLog) == 2052);

// ---- Memory and frame rate ----

struct MemoryUsage {
    static constexpr Place kReadBy = {"ADL2_Adapter_VRAMUsage_Get", 2};
    int megabytes = 0;
};

struct MemorySize {
    static constexpr Place kReadBy = {"ADL2_Adapter_MemoryInfo_Get", 2};
    std::int64_t bytes = 0;
    char type[256] = "GDDR6";
    std::int64_t bandwidth = 512000;
};
static_assert(sizeof(MemorySize) == 272);

struct FrameRate {
    static constexpr Place kReadBy = {"ADL2_Adapter_FrameMetrics_Get", 3};
    float perSecond = 0;
};

}  // namespace gputune::test

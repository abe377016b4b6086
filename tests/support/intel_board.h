// Machines with Intel boards, complete enough to initialise, and what tests of them share. All offsets and numbers are
// entered by hand.
#pragma once

#include "Machine.h"

namespace gputune::test {

// What ctlInit hands out, and the first device and the first fan; the next ones have the next numbers.
constexpr Handle kIntelApi = ScriptedHandle(0x00A91000);
constexpr Handle kDevice = ScriptedHandle(0x00DE0000);
constexpr Handle kFan = ScriptedHandle(0x00FA0000);

// Results of the control library.
constexpr int kNotInitialized = 0x40000001;
constexpr int kUnsupportedVersion = 0x40000009;
constexpr int kLoadFailed = 0x40000026;
constexpr int kFailure = 0x40000003;

// The line of a failing call: what is given is the method's tag, a blank, and what comes behind it.
std::string ErrorLine(std::string const& tag, int code, std::string const& text);
std::string FailureLine(std::string const& tag);
std::string NotInitializedLine(std::string const& tag);

// Where a device's properties begin: its type, its numbers and its name. A pointer stands before them.
constexpr int kDeviceType = sizeof(void*) == 4 ? 16 : 20;
constexpr int kDeviceNumbers = sizeof(void*) == 4 ? 56 : 64;
constexpr int kDeviceName = sizeof(void*) == 4 ? 80 : 88;

struct IntelDevice {
    Handle handle = kDevice;  // null: a position without a device
    int type = 1;             // 1 is graphics
    std::uint32_t luidLow = 0xFEDCBA98;
    int luidHigh = -2;
    int vendor = 0x8086;
    int device = 0x56A0;
    int revision = 8;
    std::string name = "Intel(R) Arc(TM) A770 Graphics";
};

// A machine with these devices. The power limit is 200 W by default, telemetry has no items, and there is one fan
// (FixedFan). Everything else answers success and nothing.
Machine IntelBoard(std::vector<IntelDevice> const& devices = {IntelDevice{}});

// What the library lists: as many as it says, and these handles.
void OrderDeviceList(Machine& machine, int count, std::vector<Handle> const& handles = {});
void OrderFanList(Machine& machine, int count, std::vector<Handle> const& handles = {});

// ---- Overclocking ----

// The controls in the properties of overclocking, by their offsets, and the flag in front of them.
namespace oc {
constexpr int kSupported = 5;
constexpr int kGpuFrequency = 8;
constexpr int kGpuVoltage = 56;
constexpr int kVramFrequency = 104;
constexpr int kVramVoltage = 152;
constexpr int kPowerLimit = 200;
constexpr int kTemperatureLimit = 248;
}  // namespace oc

struct OverclockControl {
    unsigned char supported = 0;
    unsigned char relative = 0;
    unsigned char reference = 0;
    unsigned char padding = 0;
    int units = 0;
    double minimum = 0;
    double maximum = 0;
    double step = 0;
    double standard = 0;
    double referenceValue = 0;
};
static_assert(sizeof(OverclockControl) == 48);

void OrderControl(Machine& machine, int control, OverclockControl const& properties);
// The power limit by default.
void OrderDefaultLimit(Machine& machine, double watts);
// One byte where a flag stands, to see which flag it is.
void OrderOverclockByte(Machine& machine, int offset, unsigned char value = 1);

// What the getters report.
struct SustainedLimit {
    static constexpr Place kReadBy = {"ctlOverclockPowerLimitGet", 1};
    double milliwatts = 0;
};
struct GpuOffset {
    static constexpr Place kReadBy = {"ctlOverclockGpuFrequencyOffsetGet", 1};
    double megahertz = 0;
};
struct VramOffset {
    static constexpr Place kReadBy = {"ctlOverclockVramFrequencyOffsetGet", 1};
    double megahertz = 0;
};

// What the setter of this name was sent last.
double SentValue(Machine const& machine, std::string const& entryPoint);

// ---- Telemetry ----

// The telemetry's items, by their offsets.
namespace telemetry {
constexpr int kTimeStamp = 8;
constexpr int kGpuEnergy = 32;
constexpr int kGpuVoltage = 56;
constexpr int kGpuClock = 80;
constexpr int kGpuTemperature = 104;
constexpr int kGlobalActivity = 128;
constexpr int kRenderActivity = 152;
constexpr int kMediaActivity = 176;
constexpr int kVramEnergy = 208;
constexpr int kVramVoltage = 232;
constexpr int kVramClock = 256;
constexpr int kVramEffectiveClock = 280;
constexpr int kVramRead = 304;
constexpr int kVramWrite = 328;
constexpr int kVramTemperature = 352;
constexpr int kCardEnergy = 384;
constexpr int kFanSpeed = 688;  // of the first fan; four more follow
}  // namespace telemetry

// Its units and its type are of no interest.
struct TelemetryItem {
    unsigned char supported = 1;
    unsigned char padding[3] = {};
    int units = 3;
    int type = 9;
    int morePadding = 0;
    double value = 0;
};
static_assert(sizeof(TelemetryItem) == 24);

void OrderItem(Machine& machine, int item, TelemetryItem const& reading);
void OrderItem(Machine& machine, int item, double value);
// One byte where a flag stands, to see which flag it is.
void OrderTelemetryByte(Machine& machine, int offset, unsigned char value = 1);

// ---- Fans ----

// What ctlFanGetProperties writes.
struct FanProperties {
    unsigned char canControl = 1;
    int modes = 1;  // 1 fixed speed, 2 speed table
    int units = 3;
    int maxRpm = 3300;
    int maxPoints = 0;
};
FanProperties FixedFan();
FanProperties TableFan(int points);

// Fans of every device, with handles from kFan on.
void OrderFans(Machine& machine, std::vector<FanProperties> const& fans);

// Fans without properties of their own have this mode.
void OrderModeOfOtherFans(Machine& machine, int modes);

struct FixedSpeed {
    static constexpr char const* kSentBy = "ctlFanSetFixedSpeedMode";
    int size = 16;
    int version = 0;
    int speed = 0;
    int units = 1;
    bool operator==(FixedSpeed const&) const = default;
};

// A curve as it is sent. A point has a size of its own and one of its speed; points that are not used are zeros.
struct SpeedPoint {
    int size = 0;
    int version = 0;
    int temperature = 0;
    int speedSize = 0;
    int speedVersion = 0;
    int speed = 0;
    int units = 0;
    bool operator==(SpeedPoint const&) const = default;
};
struct SpeedTable {
    static constexpr char const* kSentBy = "ctlFanSetSpeedTableMode";
    int size = 908;
    int version = 0;
    int count = 0;
    SpeedPoint points[32] = {};
    bool operator==(SpeedTable const&) const = default;
};
static_assert(sizeof(SpeedTable) == 908);

// What ctlFanGetConfig writes.
struct FanNode {
    int temperature = 0;
    int speed = 0;
    int units = 0;
};
void OrderConfig(Machine& machine, int mode, int count, std::vector<FanNode> const& nodes);

// ---- What crossed ----

// ctl_init_args_t: size, version, application version, flags, supported version, application identifier.
struct InitArgs {
    std::uint32_t words[9] = {36, 0, 0x00010001, 1, 0, 0, 0, 0, 0};

    explicit InitArgs(std::uint32_t applicationVersion = 0x00010001) { words[2] = applicationVersion; }
    bool operator==(InitArgs const&) const = default;
};

// What ctlInit hands out.
struct ApiHandle {
    static constexpr Place kReadBy = {"ctlInit", 1};
    Handle handle = kIntelApi;
};

// A call in a form that reads well where a test fails: the name, the first argument in
// hexadecimal where it is a handle, the value of a call that takes a double, and of an enumeration ": count" or for how
// many handles there is room. A call with a record to be read into that is not empty says so.
std::string DescribeIntelCall(Call const& call);
inline Lines TakeIntelTraffic(Machine& machine) {
    return machine.TakeTraffic(DescribeIntelCall);
}

// Log lines without those of the vendor's detection, which come first.
Lines WithoutDetection(Lines const& log);

Lines Joined(std::vector<Lines> const& parts);

}  // namespace gputune::test

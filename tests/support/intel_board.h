// Machines with Intel boards, complete enough to initialise, and what tests of them share. All offsets and numbers are
// entered by hand.
#pragma once

#include "Machine.h"

namespace gputune::test {

// What ctlInit hands out, and the first device and the first fan; the next ones have the next numbers.
constexpr int kIntelApi = 0x00A91000;
constexpr int kDevice = 0x00DE0000;
constexpr int kFan = 0x00FA0000;

// Results of the control library.
constexpr int kNotInitialized = 0x40000001;
constexpr int kUnsupportedVersion = 0x40000009;
constexpr int kLoadFailed = 0x40000026;
constexpr int kFailure = 0x40000003;

// The line of a failing call: what is given is the method's tag, a blank, and what comes behind it.
std::string ErrorLine(std::string const& tag, int code, std::string const& text);
std::string FailureLine(std::string const& tag);
std::string NotInitializedLine(std::string const& tag);

struct IntelDevice {
    int handle = kDevice;  // null: a position without a device
    int type = 1;          // 1 is graphics
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

// Offsets into the properties of overclocking: six controls of 48 bytes.
namespace oc {
constexpr int kSupported = 5;
constexpr int kGpuFrequency = 8;
constexpr int kGpuVoltage = 56;
constexpr int kVramFrequency = 104;
constexpr int kVramVoltage = 152;
constexpr int kPowerLimit = 200;
constexpr int kTemperatureLimit = 248;
// Of a control.
constexpr int kRelative = 1;
constexpr int kReference = 2;
constexpr int kDefault = 32;
constexpr int kReferenceValue = 40;
}  // namespace oc

// Offsets of the telemetry items.
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
// Of an item: the flag stands at its start.
constexpr int kUnits = 4;
constexpr int kType = 8;
constexpr int kValue = 16;
}  // namespace telemetry

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

// The calls since the last look, in a form that reads well where a test fails: the name, the first argument in
// hexadecimal where it is a handle, and the value of a call that takes a double.
Lines TakeIntelTraffic(Machine& machine);

// A record as it is before it is filled: its size, and zeros.
Bytes SizedRecord(int size);

// Log lines without those of the vendor's detection, which come first.
Lines WithoutDetection(Lines const& log);

Lines Joined(std::vector<Lines> const& parts);

}  // namespace gputune::test

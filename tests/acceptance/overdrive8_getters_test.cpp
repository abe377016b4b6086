// Overdrive8: the ranges and current values read back, and what the records keep of the caller's storage.
#include <cstring>
#include <new>

#include "overdrive8_traffic.h"

namespace gputune::test {
namespace {

constexpr int kUntouched = static_cast<int>(0xCDCDCDCD);

// The ints of a record that an export returned into storage full of 0xCD.
template <class Record>
std::vector<int> Answer(Record(GPUTUNE_CALL* function)()) {
    alignas(Record) unsigned char storage[sizeof(Record)];
    std::memset(storage, 0xCD, sizeof storage);
    __asm__ volatile("" : : "r"(storage) : "memory");  // the bytes are there, whatever is returned over them
    ::new (static_cast<void*>(storage)) Record(function());
    std::vector<int> ints(sizeof(Record) / sizeof(int));
    __asm__ volatile("" : : "r"(storage) : "memory");
    std::memcpy(ints.data(), storage, sizeof storage);
    return ints;
}

// The first int: the one byte of Valid.
constexpr int kValid = static_cast<int>(0xCDCDCD01);
constexpr int kInvalid = static_cast<int>(0xCDCDCD00);

TEST(Overdrive8PowerLimitSetting, NeedsNoFlag) {
    Machine machine = Overdrive8Board(0).Started();
    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPower, -7}}));
    for (int const capabilities : {0, kPower, -1}) {
        BecomeBoardWith(machine, capabilities,
                        WithRange({.feature = setting::kPower, .minimum = -20, .maximum = 20, .standard = 2}));
        EXPECT_EQ(Answer(machine.Api().GetPowerLimitSetting), (std::vector<int>{kValid, 2, 20, -20, -7}));
        EXPECT_EQ(machine.TakeLog(), Lines());
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Current_SettingX2_Get 5"}));
    }
}

TEST(Overdrive8GpuClockSetting, ComesFromTheSettingsOfTheBoardsKind) {
    std::vector<int> const untouched(8, kUntouched);
    std::vector<int> const curve = {65, 75, 69, 60, 79, 70, 63, 73};    // settings 6 and 7
    std::vector<int> const limits = {5, 375, 9, 10, 379, 370, 3, 373};  // settings 0, 1 and 37
    struct Row {
        int capabilities;
        int valid;
        std::vector<int> fields;
    };
    Row const rows[] = {
        {0, kInvalid, untouched},
        {kCurve, kInvalid, untouched},
        {0x7FFFFFFF & ~kLimits, kInvalid, untouched},
        {kLimits, kValid, limits},
        {kLimits | kMemory | kOptimized, kValid, limits},
        {kLimits | kCurve, kValid, curve},
        {-1, kValid, curve},
    };
    Machine machine = Overdrive8Board(0);
    for (Row const& row : rows) {
        SCOPED_TRACE(row.capabilities);
        BecomeBoardWith(machine, row.capabilities);
        std::vector<int> expected = {row.valid};
        expected.insert(expected.end(), row.fields.begin(), row.fields.end());
        EXPECT_EQ(Answer(machine.Api().GetGpuClockSetting), expected);
        EXPECT_EQ(machine.TakeLog(), Lines());
        EXPECT_EQ(machine.CountOf("ADL2_Overdrive8_Setting_Set"), 0);
    }
}

TEST(Overdrive8MemClockSetting, HasNoVoltages) {
    Machine machine = Overdrive8Board(kMemory).Started();
    EXPECT_EQ(Answer(machine.Api().GetMemClockSetting), (std::vector<int>{kValid, 85, -1, 89, 80, -1, -1, 83, -1}));
    EXPECT_EQ(machine.TakeLog(), Lines());
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Current_SettingX2_Get 5"}));

    for (int const capabilities : {0, 0x7FFFFFFF & ~kMemory}) {
        BecomeBoardWith(machine, capabilities);
        std::vector<int> expected(9, kUntouched);
        expected[0] = kInvalid;
        EXPECT_EQ(Answer(machine.Api().GetMemClockSetting), expected);
        EXPECT_EQ(machine.TakeLog(), Lines());
    }
}

TEST(Overdrive8FanSetting, IsTheCurveOrOnePoint) {
    Machine machine = Overdrive8Board(kFanCurve).Started();
    std::vector<int> expected(402, kUntouched);
    expected[0] = kValid;
    expected[1] = 5;
    std::vector<int> const points = {
        205, 195, 209, 200, 199, 190, 203, 193,  // default, default, max, min, max, min, current, current
        225, 215, 229, 220, 219, 210, 223, 213,  //
        245, 235, 249, 240, 239, 230, 243, 233,  //
        265, 255, 269, 260, 259, 250, 263, 253,  //
        285, 275, 289, 280, 279, 270, 283, 273,
    };
    std::copy(points.begin(), points.end(), expected.begin() + 2);
    EXPECT_EQ(Answer(machine.Api().GetFanSetting), expected);
    EXPECT_EQ(machine.TakeLog(), Lines());
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Current_SettingX2_Get 5"}));

    // Without the curve: the minimum speed and the target temperature, flags for them or not.
    for (int const capabilities : {0, kMinSpeed | kTarget, 0x7FFFFFFF & ~kFanCurve}) {
        SCOPED_TRACE(capabilities);
        BecomeBoardWith(machine, capabilities);
        std::vector<int> single(402, kUntouched);
        single[0] = kValid;
        single[1] = 1;
        std::vector<int> const point = {105, 125, 109, 100, 129, 120, 103, 123};
        std::copy(point.begin(), point.end(), single.begin() + 2);
        EXPECT_EQ(Answer(machine.Api().GetFanSetting), single);
        EXPECT_EQ(machine.TakeLog(), Lines());
    }
}

TEST(Overdrive8Getters, ShowTheRangesAloneWhereTheCurrentValuesCannotBeRead) {
    Machine machine =
        Overdrive8Board(kLimits | kMemory | kFanCurve).Result("ADL2_Overdrive8_Current_SettingX2_Get", -1).Started();
    EXPECT_EQ(Answer(machine.Api().GetPowerLimitSetting), (std::vector<int>{kValid, 0, 20, -20, -1}));
    EXPECT_EQ(Answer(machine.Api().GetGpuClockSetting), (std::vector<int>{kValid, 5, 375, 9, 10, 379, 370, -1, -1}));
    EXPECT_EQ(Answer(machine.Api().GetMemClockSetting), (std::vector<int>{kValid, 85, -1, 89, 80, -1, -1, -1, -1}));
    EXPECT_EQ(machine.TakeLog(), kCurrentFailed + kCurrentFailed + kCurrentFailed);
    std::vector<int> const fan = Answer(machine.Api().GetFanSetting);
    EXPECT_EQ(std::vector<int>(fan.begin(), fan.begin() + 10),
              (std::vector<int>{kValid, 5, 205, 195, 209, 200, 199, 190, -1, -1}));
    EXPECT_EQ(machine.TakeLog(), kCurrentFailed);
}

}  // namespace
}  // namespace gputune::test

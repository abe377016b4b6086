// The state of a board that several processes share: its file's image, and what of each vendor's board is in it.
#include <gtest/gtest.h>

#include <filesystem>

#include "sim/amd/AmdDriver.h"
#include "sim/board/BoardFile.h"
#include "sim/intel/IntelDriver.h"
#include "sim/model/TimeSource.h"
#include "sim/nvidia/NvidiaDriver.h"
#include "sim/state/state_image.h"

namespace {

using namespace gputune::sim;
namespace amd = gputune::amd;
namespace intel = gputune::intel;

constexpr std::uint64_t kBoard = 77;
StateBytes const kFirst = {1, 2, 3};
StateBytes const kSecond = {4, 5, 6};

void Write(StateBytes& file, StatePart const& part) {
    file.resize(std::max(file.size(), part.offset + part.bytes.size()));
    std::copy(part.bytes.begin(), part.bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(part.offset));
}

std::string ErrorOf(StateBytes const& file, std::uint64_t board = kBoard) {
    try {
        NewestState(file, board);
        return "";
    } catch (StateError const& error) {
        return error.what();
    }
}

TEST(SimBoardState, NewestStateIsTheOneWrittenLast) {
    StateBytes file = NewStateImage(kBoard, kFirst);
    EXPECT_EQ(NewestState(file, kBoard).bytes, kFirst);
    for (std::uint64_t number = 1; number < 6; ++number) {
        StateBytes const bytes(3, static_cast<unsigned char>(number));
        Write(file, PartOf({.number = number, .bytes = bytes}));
        BoardState const newest = NewestState(file, kBoard);
        EXPECT_EQ(newest.number, number);
        EXPECT_EQ(newest.bytes, bytes);
    }
}

// Whatever a process that dies has written of a state, the former one is there.
TEST(SimBoardState, InterruptedWriteLeavesTheFormerState) {
    StateBytes file = NewStateImage(kBoard, kFirst);
    Write(file, PartOf({.number = 1, .bytes = kFirst}));
    StatePart const part = PartOf({.number = 2, .bytes = kSecond});
    for (std::size_t written = 0; written < part.bytes.size(); ++written) {
        StateBytes interrupted = file;
        std::copy_n(part.bytes.begin(), written, interrupted.begin() + static_cast<std::ptrdiff_t>(part.offset));
        EXPECT_EQ(NewestState(interrupted, kBoard).number, 1U) << written;
        EXPECT_EQ(NewestState(interrupted, kBoard).bytes, kFirst) << written;
    }
}

TEST(SimBoardState, FileThatIsNotThisBoardsStateIsRefused) {
    StateBytes const file = NewStateImage(kBoard, kFirst);
    EXPECT_EQ(ErrorOf({}), "it is no board's state");
    EXPECT_EQ(ErrorOf(StateBytes(200, 'x')), "it is no board's state");
    EXPECT_EQ(ErrorOf(StateBytes(file.begin(), file.begin() + 40)), "it is no board's state");
    EXPECT_EQ(ErrorOf(file, kBoard + 1), "it is the state of another board file, or of this one before it was changed");
    StateBytes other = file;
    other[20] = 9;
    EXPECT_EQ(ErrorOf(other), "it has the format 9, and this is 1");
    StateBytes damaged = file;
    damaged.back() ^= 1;
    EXPECT_EQ(ErrorOf(damaged), "it is damaged");
    EXPECT_EQ(ErrorOf(StateBytes(file.begin(), file.end() - 1)), "it is damaged");
    StateBytes huge = file;
    std::fill(huge.begin() + 32, huge.begin() + 40, 0xFF);
    EXPECT_EQ(ErrorOf(huge), "it is damaged");
}

Board Shipped(char const* name) {
    return ReadBoardFile((std::filesystem::path(GPUTUNE_BOARDS) / name).string() + ".json");
}

StateBytes Saved(BoardDriver& driver) {
    StateWriter writer;
    driver.Save(writer);
    return writer.Result();
}

template <class Driver>
void Restore(Driver& driver, StateBytes const& state) {
    StateReader reader(state);
    driver.Restore(reader);
    EXPECT_TRUE(reader.AtEnd());
}

TEST(SimBoardState, OverdriveNBoardGoesOnInAnotherProcess) {
    AmdDriver first(Shipped("overdriven"));
    int const adapter = first.Description().adapters.front().index;
    EXPECT_TRUE(first.FansAreAutomatic());
    auto const set = [](OverdriveNState& state, Readings const&) {
        amd::ADLFanSpeedValue const value{
            .iSize = sizeof(value), .iSpeedType = amd::kFanSpeedTypePercent, .iFanSpeed = 77, .iFlags = 0};
        return state.SetFanSpeed(0, value) +
               state.SetPowerLimit({.iMode = amd::kOdnModeManual, .iTDPLimit = 12, .iMaxOperatingTemperature = 80});
    };
    ASSERT_EQ(first.With<OverdriveNState>(adapter, 40, set), 0);
    AmdDriver second(Shipped("overdriven"));
    Restore(second, Saved(first));
    EXPECT_EQ(Saved(second), Saved(first));
    EXPECT_FALSE(second.FansAreAutomatic());
    auto const same = [&](Readings const& readings) {
        return first.WithReadings(adapter, 60, [&](Readings const& others) {
            EXPECT_EQ(readings.temperature, others.temperature);
            EXPECT_EQ(readings.fanPercent, others.fanPercent);
            return 0;
        });
    };
    EXPECT_EQ(second.WithReadings(adapter, 60, same), 0);
    second.Forget(false);
    EXPECT_FALSE(second.FansAreAutomatic());
    second.Forget(true);
    EXPECT_TRUE(second.FansAreAutomatic());
}

TEST(SimBoardState, OtherSettingsThanTheFansAreForgottenAlone) {
    AmdDriver driver(Shipped("overdrive8"));
    int const adapter = driver.Description().adapters.front().index;
    auto const set = [](Overdrive8State& state, Readings const&) {
        amd::ADLOD8SetSetting request{};
        request.count = amd::kOd8Count;
        request.od8SettingTable[9] = {.value = 10, .requested = 1, .reset = 0};
        request.od8SettingTable[20] = {.value = 66, .requested = 1, .reset = 0};
        amd::ADLOD8CurrentSetting out{};
        return state.Set(request, out);
    };
    ASSERT_EQ(driver.With<Overdrive8State>(adapter, 0, set), 0);
    auto const settings = [&] {
        std::vector<int> values;
        driver.With<Overdrive8State>(adapter, 0, [&](Overdrive8State& state, Readings const&) {
            values = state.CurrentSettings();
            return 0;
        });
        return values;
    };
    EXPECT_EQ(settings()[9], 10);
    EXPECT_FALSE(driver.FansAreAutomatic());
    driver.Forget(false);
    EXPECT_EQ(settings()[9], 0);
    EXPECT_EQ(settings()[20], 66);
    driver.Forget(true);
    EXPECT_TRUE(driver.FansAreAutomatic());
}

TEST(SimBoardState, IntelBoardGoesOnInAnotherProcess) {
    IntelDriver first(Shipped("intel"));
    auto const device = first.Devices().front();
    auto const fan = first.Fans(device).front();
    EXPECT_TRUE(first.FansAreAutomatic());
    std::size_t const size = Saved(first).size();
    auto const set = [](IntelDeviceState& state, std::size_t number) {
        intel::ctl_fan_speed_table_t table{};
        table.numPoints = 2;
        for (auto& point : {&table.table[0], &table.table[1]}) {
            point->temperature = 50;
            point->speed = {.Size = 0, .Version = 0, .speed = 80, .units = intel::kCtlFanUnitsPercent};
        }
        return state.SetFanTable(number, table) + state.SetPowerLimit(100000);
    };
    ASSERT_EQ(first.WithFan(fan, 30, set), 0);
    IntelDriver second(Shipped("intel"));
    Restore(second, Saved(first));
    EXPECT_EQ(Saved(second), Saved(first));
    EXPECT_EQ(Saved(second).size(), size) << "a table takes as much room as none";
    EXPECT_FALSE(second.FansAreAutomatic());
    auto const read = [](IntelDeviceState& state, std::size_t number) {
        intel::ctl_fan_config_t config{};
        EXPECT_EQ(state.GetFanConfig(number, config), 0);
        EXPECT_EQ(config.speedTable.numPoints, 2);
        double milliwatts = 0;
        EXPECT_EQ(state.GetPowerLimit(milliwatts), 0);
        EXPECT_EQ(milliwatts, 100000);
        return 0;
    };
    EXPECT_EQ(second.WithFan(fan, 30, read), 0);
    second.Forget(true);
    EXPECT_TRUE(second.FansAreAutomatic());
}

TEST(SimBoardState, NvidiaBoardGoesOnInAnotherProcess) {
    NvidiaDriver first(Shipped("nvidia"));
    NvidiaDriver second(Shipped("nvidia"));
    gputune::nvidia::NV_GPU_THERMAL_SETTINGS out{};
    out.version = gputune::nvidia::kThermalSettingsVersion2;
    ASSERT_EQ(first.GetThermalSettings(first.Gpus().front(), 30, gputune::nvidia::kThermalTargetAll, out), 0);
    EXPECT_NE(Saved(second), Saved(first));
    Restore(second, Saved(first));
    EXPECT_EQ(Saved(second), Saved(first));
}

TEST(SimBoardState, TooShortAStateIsRefused) {
    NvidiaDriver driver(Shipped("nvidia"));
    StateBytes state = Saved(driver);
    state.pop_back();
    StateReader reader(state);
    EXPECT_THROW(driver.Restore(reader), StateError);
}

TEST(SimBoardState, SharedTimeGoesOnAndTimeByHandStaysByHand) {
    TimeSource first;
    first.Share();
    first.Advance(5000);
    StateWriter writer;
    writer(first);
    TimeSource second;
    StateReader reader(writer.Result());
    reader(second);
    EXPECT_EQ(second.Now(), first.Now());
    second.Advance(1000);
    EXPECT_EQ(second.Now(), first.Now() + 1);
}

TEST(SimBoardState, SharedTimeCountsFromTheFirstProcess) {
    TimeSource first;
    first.Share();
    StateWriter writer;
    writer(first);
    TimeSource second;
    StateReader reader(writer.Result());
    reader(second);
    double const before = first.Now();
    double const now = second.Now();
    EXPECT_GE(now, before);
    EXPECT_LE(now, first.Now());
}

TEST(SimModelStuck, StuckReadingKeepsItsValueAndTheOthersMove) {
    ThermalModel model({.load = {{10, 5}, {200, 100}}}, {});
    model.AdvanceTo(15);
    double const stuck = model.Read().temperature;
    model.SetStuck(0, true);
    model.AdvanceTo(100);
    model.SetStuck(0, true);
    EXPECT_EQ(model.Read().temperature, stuck);
    EXPECT_GT(model.Read().hotspotTemperature, stuck + 11);
    model.SetStuck(0, false);
    EXPECT_GT(model.Read().temperature, stuck);
}

}  // namespace

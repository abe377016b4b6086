// The exports as a host built by another compiler calls them: in a 32-bit process with a stack that is aligned to 4
// bytes only, with a hidden pointer for records, and with registers that must survive.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <iterator>

#include "boards.h"
#include "patterned_call.h"

namespace gputune::test {
namespace {

using Words = std::vector<Word>;

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

// Calls, and expects what holds for every function of the convention. The words behind the arguments are still there:
// the caller pops its arguments, the hidden one included.
std::uint64_t Call(void* function, Words words, int misalignment) {
    words.resize(kMaxWords, static_cast<Word>(0xA5A5A5A5));
    std::uint64_t const result = CallWithPatterns(function, words.data(), misalignment);
    EXPECT_EQ(Lost(), "");
    return result;
}

int Number(std::uint64_t result) {
    return static_cast<int>(result);
}

bool InAl(std::uint64_t result) {
    auto const al = static_cast<unsigned char>(result);
    EXPECT_LE(al, 1U);
    return al == 1;
}

// A record of the caller's, filled with a pattern and with more of it around.
template <class Record>
class Storage {
public:
    Storage() { std::memset(bytes_, kPattern, sizeof bytes_); }

    void Fetch(void* function, Words words, int misalignment) {
        auto const begin = reinterpret_cast<std::uintptr_t>(Begin());
        words.insert(words.begin(), static_cast<Word>(begin));
        // In eax or rax; edx has no meaning.
        EXPECT_EQ(static_cast<std::uintptr_t>(Call(function, words, misalignment)), begin) << "the hidden pointer";
        for (std::size_t index = 0; index < kGuard; ++index) {
            EXPECT_EQ(bytes_[index], kPattern);
            EXPECT_EQ(bytes_[kGuard + sizeof(Record) + index], kPattern);
        }
    }

    unsigned char Byte(std::size_t offset) const { return bytes_[kGuard + offset]; }

    bool Untouched(std::size_t first, std::size_t end) const {
        while (first < end && Byte(first) == kPattern) {
            ++first;
        }
        return first == end;
    }

    Record Get() const {
        Record record;
        std::memcpy(&record, bytes_ + kGuard, sizeof record);
        return record;
    }

private:
    static constexpr unsigned char kPattern = 0xCC;
    static constexpr std::size_t kGuard = 64;

    unsigned char* Begin() { return bytes_ + kGuard; }

    alignas(16) unsigned char bytes_[kGuard + sizeof(Record) + kGuard];
};

Machine ReadyBoard() {
    Machine machine = OverdriveNBoard();
    machine.Reports(Temperature{.millidegrees = 65500});
    EXPECT_TRUE(machine.Init(GPUTUNE_LOG_FILE));
    return machine;
}

TEST(Abi, StartWorksOnEveryStack) {
    Machine machine = ReadyBoard();
    for (int const misalignment : kMisalignments) {
        SCOPED_TRACE(misalignment);
        EXPECT_TRUE(InAl(Call(Address(machine.Api().InitVGAHelper), {2}, misalignment)));
    }
}

TEST(Abi, BoolsAreInAl) {
    Machine machine = ReadyBoard();
    Exports const& api = machine.Api();
    for (int const misalignment : kMisalignments) {
        SCOPED_TRACE(misalignment);
        EXPECT_TRUE(InAl(Call(Address(api.IsInitOk), {}, misalignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetActiveAdapterIndex), {5}, misalignment)));
        EXPECT_FALSE(InAl(Call(Address(api.SetActiveAdapterIndex), {0}, misalignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetFanSpeed), {40}, misalignment)));
        EXPECT_FALSE(InAl(Call(Address(api.SetFanSpeedTable), {0, 5}, misalignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetPowerLimit), {75, 10}, misalignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetPowerLimitDefault), {}, misalignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetPerformanceUser), {1200, 1000, 1800, 900}, misalignment)));
        EXPECT_FALSE(InAl(Call(Address(api.SetPerformanceOC), {}, misalignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetPerformanceDefault), {}, misalignment)));
        EXPECT_FALSE(InAl(Call(Address(api.SetPerformanceSilent), {}, misalignment)));
    }
    EXPECT_EQ(machine.LastCall("ADL2_OverdriveN_PowerLimit_Set").entryPoint, "ADL2_OverdriveN_PowerLimit_Set");
}

TEST(Abi, NumbersAreInEax) {
    Machine machine = ReadyBoard();
    for (int const misalignment : kMisalignments) {
        SCOPED_TRACE(misalignment);
        EXPECT_EQ(Number(Call(Address(machine.Api().GetActiveAdapterIndex), {}, misalignment)), 5);
        EXPECT_EQ(Number(Call(Address(machine.Api().GetFrameRate), {}, misalignment)), -1);
        Call(Address(machine.Api().FetchHwmValues), {}, misalignment);
    }
    EXPECT_EQ(machine.Api().GetHwmValue(2).Value, 65.5);
}

TEST(Abi, VendorInfoIsInEdxAndEaxOrInRax) {
    Machine machine = ReadyBoard();
    for (int const misalignment : kMisalignments) {
        EXPECT_EQ(Call(Address(machine.Api().GetVendorInfo), {}, misalignment), 0x3'0000'0001U);
    }
}

TEST(Abi, RecordsAreWrittenIntoTheCallersStorage) {
    Machine machine = ReadyBoard();
    Exports const& api = machine.Api();
    api.FetchHwmValues();
    for (int const misalignment : kMisalignments) {
        SCOPED_TRACE(misalignment);
        Storage<VgaInfo> info;
        info.Fetch(Address(api.GetVGAInfo), {}, misalignment);
        EXPECT_EQ(info.Get().SubsystemId, 0x0B361002U);
        EXPECT_STREQ(info.Get().AdapterName, "Radeon RX 580 Series");
        EXPECT_EQ(info.Get().BusNumber, 3);

        Storage<HwmValue> value;
        value.Fetch(Address(api.GetHwmValue), {2}, misalignment);
        EXPECT_EQ(value.Get().Value, 65.5);
        EXPECT_STREQ(value.Get().Name, "GPU Temperature");
        EXPECT_EQ(value.Byte(264), 1);
        EXPECT_EQ(value.Byte(271), 0);

        Storage<HwmValue> absent;
        absent.Fetch(Address(api.GetHwmValue), {21}, misalignment);
        EXPECT_EQ(absent.Get().Value, 0.0);
        EXPECT_EQ(absent.Byte(271), 0);

        Storage<FanSetting> fan;
        fan.Fetch(Address(api.GetFanSetting), {}, misalignment);
        EXPECT_EQ(fan.Get().PointCount, 1);

        Storage<PowerLimitSetting> power;
        power.Fetch(Address(api.GetPowerLimitSetting), {}, misalignment);
        EXPECT_EQ(power.Get().Max, 50);
        EXPECT_EQ(power.Get().Current, -1);

        Storage<ClockSetting> gpu;
        gpu.Fetch(Address(api.GetGpuClockSetting), {}, misalignment);
        EXPECT_EQ(gpu.Get().MaxClock, 2000);

        Storage<ClockSetting> memory;
        memory.Fetch(Address(api.GetMemClockSetting), {}, misalignment);
        EXPECT_EQ(memory.Get().MaxClock, 2250);

        Storage<PredefinedPerformanceParameter> profile;
        profile.Fetch(Address(api.GetExternalPerformanceParameter), {0x0B361002}, misalignment);
        EXPECT_EQ(profile.Byte(0), 0);
        EXPECT_EQ(profile.Get().NewestVBIOS, 0);
    }
}

TEST(Abi, RecordsWithoutAnAdapterAreAllZero) {
    Machine machine = OverdriveNBoard();
    Exports const& api = machine.Api();
    for (int const misalignment : kMisalignments) {
        auto const expectZero = [&]<class Record>(Storage<Record> storage, void* function, Words const& words) {
            storage.Fetch(function, words, misalignment);
            for (std::size_t offset = 0; offset < sizeof(Record); ++offset) {
                ASSERT_EQ(storage.Byte(offset), 0) << offset;
            }
        };
        expectZero(Storage<VgaInfo>(), Address(api.GetVGAInfo), {});
        expectZero(Storage<HwmValue>(), Address(api.GetHwmValue), {0});
        expectZero(Storage<FanSetting>(), Address(api.GetFanSetting), {});
        expectZero(Storage<PowerLimitSetting>(), Address(api.GetPowerLimitSetting), {});
        expectZero(Storage<ClockSetting>(), Address(api.GetGpuClockSetting), {});
        expectZero(Storage<ClockSetting>(), Address(api.GetMemClockSetting), {});
        expectZero(Storage<PredefinedPerformanceParameter>(), Address(api.GetExternalPerformanceParameter), {0});
        EXPECT_FALSE(InAl(Call(Address(api.IsInitOk), {}, misalignment)));
        EXPECT_FALSE(InAl(Call(Address(api.SetFanSpeed), {50}, misalignment)));
        EXPECT_EQ(Number(Call(Address(api.GetActiveAdapterIndex), {}, misalignment)), -1);
        EXPECT_EQ(Number(Call(Address(api.GetFrameRate), {}, misalignment)), -1);
    }
}

TEST(Abi, OverdriveNFanSettingLeavesTheCallersPoints) {
    Machine machine = ReadyBoard();
    Storage<FanSetting> fan;
    fan.Fetch(Address(machine.Api().GetFanSetting), {}, kMisalignments[std::size(kMisalignments) - 1]);
    EXPECT_EQ(fan.Byte(0), 1);
    EXPECT_TRUE(fan.Untouched(1, 4));
    EXPECT_EQ(fan.Get().PointCount, 1);
    EXPECT_TRUE(fan.Untouched(8, sizeof(FanSetting)));
}

TEST(Abi, ValidIsWrittenAsTheOneByteItIs) {
    Machine machine = ReadyBoard();
    Storage<PowerLimitSetting> power;
    power.Fetch(Address(machine.Api().GetPowerLimitSetting), {}, 0);
    EXPECT_EQ(power.Byte(0), 1);
    EXPECT_TRUE(power.Untouched(1, 4));
    Storage<ClockSetting> clock;
    clock.Fetch(Address(machine.Api().GetMemClockSetting), {}, 0);
    EXPECT_EQ(clock.Byte(0), 1);
    EXPECT_TRUE(clock.Untouched(1, 4));
}

TEST(Abi, AllocationCallbackWorksOnAnOddStack) {
    Machine machine = ReadyBoard();
    ScriptedLibrary& adl = machine.Scripted();
    for (bool const isOdd : {false, true}) {
        auto const ask = [&](int size) { return isOdd ? adl.AskWithOddStack(size) : adl.AskForMemory(size); };
        void* const block = ask(1580);
        ASSERT_NE(block, nullptr);
        std::memset(block, 0xAB, 1580);
        EXPECT_NE(ask(1), nullptr);
        EXPECT_NE(ask(0), nullptr);
        EXPECT_EQ(ask(-1), nullptr);
        EXPECT_EQ(ask(INT_MIN), nullptr);
        if (sizeof(void*) == 4) {
            // More than the address space of this process has.
            EXPECT_EQ(ask(INT_MAX), nullptr);
        }
    }
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
}

}  // namespace
}  // namespace gputune::test

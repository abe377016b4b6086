// The exports as a host built by another compiler calls them: with a stack that is aligned to 4 bytes only, a hidden
// pointer for records, and registers that must survive. Every call goes through a few lines of assembly.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>

#include "boards.h"

extern "C" {

// What the registers hold behind a call.
struct RawResult {
    std::uint32_t stackBefore;  // esp with the arguments pushed
    std::uint32_t stackAfter;   // esp when the callee has returned
    std::uint32_t eax;
    std::uint32_t edx;
    std::uint32_t ebx;
    std::uint32_t esi;
    std::uint32_t edi;
};

// Calls `function` with these words as its arguments and esp % 16 == `alignment` at the call.
void CallRaw(void* function, std::uint32_t const* words, std::uint32_t count, std::uint32_t alignment,
             RawResult* result);
}

__asm__(R"(
    .text
    .globl _CallRaw
_CallRaw:
    pushl %ebp
    movl %esp, %ebp
    pushl %ebx
    pushl %esi
    pushl %edi
    movl 12(%ebp), %esi
    movl 16(%ebp), %ecx
    leal (,%ecx,4), %eax
    addl 20(%ebp), %eax
    negl %eax
    andl $15, %eax
    andl $-16, %esp
    subl %eax, %esp
1:  testl %ecx, %ecx
    jz 2f
    pushl -4(%esi,%ecx,4)
    decl %ecx
    jmp 1b
2:  movl 24(%ebp), %eax
    movl %esp, 0(%eax)
    movl $0x11B11B11, %ebx
    movl $0x22512251, %esi
    movl $0x33D133D1, %edi
    movl $0xA5A5A5A5, %eax
    movl $0xA5A5A5A5, %edx
    call *8(%ebp)
    movl 24(%ebp), %ecx
    movl %esp, 4(%ecx)
    movl %eax, 8(%ecx)
    movl %edx, 12(%ecx)
    movl %ebx, 16(%ecx)
    movl %esi, 20(%ecx)
    movl %edi, 24(%ecx)
    leal -12(%ebp), %esp
    popl %edi
    popl %esi
    popl %ebx
    popl %ebp
    ret
)");

namespace gputune::test {
namespace {

using Words = std::vector<std::uint32_t>;

constexpr std::uint32_t kAlignments[] = {0, 4, 8, 12};

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

std::uint32_t Word(void const* pointer) {
    return reinterpret_cast<std::uint32_t>(pointer);
}

// Calls, and expects what holds for every function of the convention.
RawResult Call(void* function, Words const& words, std::uint32_t alignment) {
    RawResult result{};
    CallRaw(function, words.data(), static_cast<std::uint32_t>(words.size()), alignment, &result);
    EXPECT_EQ(result.stackBefore % 16, alignment);
    EXPECT_EQ(result.stackAfter, result.stackBefore) << "the caller pops its arguments, the hidden one included";
    EXPECT_EQ(result.ebx, 0x11B11B11U);
    EXPECT_EQ(result.esi, 0x22512251U);
    EXPECT_EQ(result.edi, 0x33D133D1U);
    return result;
}

bool InAl(RawResult const& result) {
    std::uint32_t const al = result.eax & 0xFF;
    EXPECT_LE(al, 1U);
    return al == 1;
}

// A record of the caller's, filled with a pattern and with more of it around.
template <class Record>
class Storage {
public:
    Storage() { std::memset(bytes_, kPattern, sizeof bytes_); }

    RawResult Fetch(void* function, Words words, std::uint32_t alignment) {
        words.insert(words.begin(), Word(Begin()));
        RawResult const result = Call(function, words, alignment);
        EXPECT_EQ(result.eax, Word(Begin())) << "the hidden pointer is the result";
        for (std::size_t index = 0; index < kGuard; ++index) {
            EXPECT_EQ(bytes_[index], kPattern);
            EXPECT_EQ(bytes_[kGuard + sizeof(Record) + index], kPattern);
        }
        return result;
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
    for (std::uint32_t const alignment : kAlignments) {
        SCOPED_TRACE(alignment);
        EXPECT_TRUE(InAl(Call(Address(machine.Api().InitVGAHelper), {2}, alignment)));
    }
}

TEST(Abi, BoolsAreInAl) {
    Machine machine = ReadyBoard();
    Exports const& api = machine.Api();
    for (std::uint32_t const alignment : kAlignments) {
        SCOPED_TRACE(alignment);
        EXPECT_TRUE(InAl(Call(Address(api.IsInitOk), {}, alignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetActiveAdapterIndex), {5}, alignment)));
        EXPECT_FALSE(InAl(Call(Address(api.SetActiveAdapterIndex), {0}, alignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetFanSpeed), {40}, alignment)));
        EXPECT_FALSE(InAl(Call(Address(api.SetFanSpeedTable), {0, 5}, alignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetPowerLimit), {75, 10}, alignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetPowerLimitDefault), {}, alignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetPerformanceUser), {1200, 1000, 1800, 900}, alignment)));
        EXPECT_FALSE(InAl(Call(Address(api.SetPerformanceOC), {}, alignment)));
        EXPECT_TRUE(InAl(Call(Address(api.SetPerformanceDefault), {}, alignment)));
        EXPECT_FALSE(InAl(Call(Address(api.SetPerformanceSilent), {}, alignment)));
    }
    EXPECT_EQ(machine.LastCall("ADL2_OverdriveN_PowerLimit_Set").entryPoint, "ADL2_OverdriveN_PowerLimit_Set");
}

TEST(Abi, NumbersAreInEax) {
    Machine machine = ReadyBoard();
    for (std::uint32_t const alignment : kAlignments) {
        SCOPED_TRACE(alignment);
        EXPECT_EQ(Call(Address(machine.Api().GetActiveAdapterIndex), {}, alignment).eax, 5U);
        EXPECT_EQ(Call(Address(machine.Api().GetFrameRate), {}, alignment).eax, 0xFFFFFFFF);
        Call(Address(machine.Api().FetchHwmValues), {}, alignment);
    }
    EXPECT_EQ(machine.Api().GetHwmValue(2).Value, 65.5);
}

TEST(Abi, VendorInfoIsInEdxAndEax) {
    Machine machine = ReadyBoard();
    for (std::uint32_t const alignment : kAlignments) {
        RawResult const result = Call(Address(machine.Api().GetVendorInfo), {}, alignment);
        EXPECT_EQ(result.edx, 3U);
        EXPECT_EQ(result.eax, 1U);
    }
}

TEST(Abi, RecordsAreWrittenIntoTheCallersStorage) {
    Machine machine = ReadyBoard();
    Exports const& api = machine.Api();
    api.FetchHwmValues();
    for (std::uint32_t const alignment : kAlignments) {
        SCOPED_TRACE(alignment);
        Storage<VgaInfo> info;
        info.Fetch(Address(api.GetVGAInfo), {}, alignment);
        EXPECT_EQ(info.Get().SubsystemId, 0x0B361002U);
        EXPECT_STREQ(info.Get().AdapterName, "Radeon RX 580 Series");
        EXPECT_EQ(info.Get().BusNumber, 3);

        Storage<HwmValue> value;
        value.Fetch(Address(api.GetHwmValue), {2}, alignment);
        EXPECT_EQ(value.Get().Value, 65.5);
        EXPECT_STREQ(value.Get().Name, "GPU Temperature");
        EXPECT_EQ(value.Byte(264), 1);
        EXPECT_EQ(value.Byte(271), 0);

        Storage<HwmValue> absent;
        absent.Fetch(Address(api.GetHwmValue), {21}, alignment);
        EXPECT_EQ(absent.Get().Value, 0.0);
        EXPECT_EQ(absent.Byte(271), 0);

        Storage<FanSetting> fan;
        fan.Fetch(Address(api.GetFanSetting), {}, alignment);
        EXPECT_EQ(fan.Get().PointCount, 1);

        Storage<PowerLimitSetting> power;
        power.Fetch(Address(api.GetPowerLimitSetting), {}, alignment);
        EXPECT_EQ(power.Get().Max, 50);
        EXPECT_EQ(power.Get().Current, -1);

        Storage<ClockSetting> gpu;
        gpu.Fetch(Address(api.GetGpuClockSetting), {}, alignment);
        EXPECT_EQ(gpu.Get().MaxClock, 2000);

        Storage<ClockSetting> memory;
        memory.Fetch(Address(api.GetMemClockSetting), {}, alignment);
        EXPECT_EQ(memory.Get().MaxClock, 2250);

        Storage<PredefinedPerformanceParameter> profile;
        profile.Fetch(Address(api.GetExternalPerformanceParameter), {0x0B361002}, alignment);
        EXPECT_EQ(profile.Byte(0), 0);
        EXPECT_EQ(profile.Get().NewestVBIOS, 0);
    }
}

TEST(Abi, RecordsWithoutAnAdapterAreAllZero) {
    Machine machine = OverdriveNBoard();
    Exports const& api = machine.Api();
    for (std::uint32_t const alignment : kAlignments) {
        auto const expectZero = [&]<class Record>(Storage<Record> storage, void* function, Words const& words) {
            storage.Fetch(function, words, alignment);
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
        EXPECT_FALSE(InAl(Call(Address(api.IsInitOk), {}, alignment)));
        EXPECT_FALSE(InAl(Call(Address(api.SetFanSpeed), {50}, alignment)));
        EXPECT_EQ(Call(Address(api.GetActiveAdapterIndex), {}, alignment).eax, 0xFFFFFFFF);
        EXPECT_EQ(Call(Address(api.GetFrameRate), {}, alignment).eax, 0xFFFFFFFF);
    }
}

TEST(Abi, OverdriveNFanSettingLeavesTheCallersPoints) {
    Machine machine = ReadyBoard();
    Storage<FanSetting> fan;
    fan.Fetch(Address(machine.Api().GetFanSetting), {}, 12);
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
        // More than the address space of this process has.
        EXPECT_EQ(ask(INT_MAX), nullptr);
    }
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
}

}  // namespace
}  // namespace gputune::test

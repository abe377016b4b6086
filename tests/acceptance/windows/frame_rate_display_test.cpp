// The frame rate where the display kernel is the system's own. Needs a display: under Wine, a DISPLAY that can be
// opened.
#include <windows.h>

#include <gtest/gtest.h>

#include <optional>

#include "boards.h"

namespace gputune::test {
namespace {

// The display kernel's record, entered by hand: the name, the adapter's handle at 64, its identifier, the source at 76.
struct OpenDisplay {
    WCHAR name[32];
    UINT handle;
    LUID adapter;
    UINT source;
};

template <class Record>
LONG Thunk(char const* name, Record& record) {
    HMODULE const gdi = ::LoadLibraryW(L"gdi32.dll");
    auto* const function =
        reinterpret_cast<LONG(WINAPI*)(Record*)>(reinterpret_cast<void*>(::GetProcAddress(gdi, name)));
    return function == nullptr ? -1 : function(&record);
}

// The source that the system gives a display; nothing when it opens none under this name.
std::optional<int> SourceOf(std::wstring const& name) {
    OpenDisplay open{};
    name.copy(open.name, 31);
    open.source = 0xEEEEEEEE;
    if (Thunk("D3DKMTOpenAdapterFromGdiDisplayName", open) != 0) {
        return std::nullopt;
    }
    Thunk("D3DKMTCloseAdapter", open.handle);
    return static_cast<int>(open.source);
}

// Like the records of the driver's older list: 1,572 bytes, the display's name at 536.
Bytes Displays(std::vector<std::string> const& names) {
    Bytes list;
    for (std::string const& name : names) {
        Bytes const record = Patched(Bytes(1572), 536, Text(name));
        list.insert(list.end(), record.begin(), record.end());
    }
    return list;
}

TEST(FrameRateDisplay, IsAskedAboutTheSourceThatTheSystemGives) {
    std::optional<int> const source = SourceOf(L"\\\\.\\DISPLAY1");
    if (!source) {
        GTEST_SKIP() << "no display that can be opened";
    }
    Machine machine = Overdrive8Board(0);
    machine.Write("ADL2_Adapter_AdapterInfoX3_Get", 2, Ints({3}));
    machine.Allocate("ADL2_Adapter_AdapterInfoX3_Get", 3,
                     Displays({"\\\\.\\NOWHERE1", "\\\\.\\DISPLAY1", "\\\\.\\NOWHERE2"}));
    machine.Write("ADL2_Adapter_FrameMetrics_Get", 3, {0x00, 0x00, 0x6F, 0x42});  // 59.75
    ASSERT_TRUE(machine.InitAndForget());

    EXPECT_EQ(machine.Api().GetFrameRate(), 59);
    EXPECT_EQ(machine.LastCall("ADL2_Adapter_FrameMetrics_Get").args.at(2), *source);
    EXPECT_EQ(machine.TakeLog(), Lines({
                                     "[OD8Helper::GetFrameRate()] numAdapters ... 3",
                                     "[OD8Helper::GetFrameRate()] dispDeviceName ... \\\\.\\NOWHERE1",
                                     "[OD8Helper::GetFrameRate()] dispDeviceName ... \\\\.\\DISPLAY1",
                                     "[OD8Helper::GetFrameRate()] D3DKMTOpenAdapterFromGdiDisplayName ... 0",
                                     "[OD8Helper::GetFrameRate()] current fps ... 59.750000",
                                 }));
}

}  // namespace
}  // namespace gputune::test

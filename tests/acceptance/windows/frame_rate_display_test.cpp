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

constexpr char kOpen[] = "D3DKMTOpenAdapterFromGdiDisplayName";
constexpr char kClose[] = "D3DKMTCloseAdapter";

std::wstring Name(int display) {
    return L"\\\\.\\DISPLAY" + std::to_wstring(display);
}

// What the system answers for a display; nothing when it opens none under this name. The adapter is left closed.
std::optional<OpenDisplay> Open(int display) {
    OpenDisplay open{};
    Name(display).copy(open.name, 31);
    open.source = 0xEEEEEEEE;
    if (Thunk(kOpen, open) != 0) {
        return std::nullopt;
    }
    EXPECT_EQ(Thunk(kClose, open.handle), 0);
    return open;
}

// The display of the highest number: its source is the least likely to be 0, which any mistake may hit.
int LastDisplay() {
    int display = 4;
    while (display > 0 && !Open(display)) {
        --display;
    }
    return display;
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
    int const display = LastDisplay();
    if (display == 0) {
        GTEST_SKIP() << "no display that can be opened";
    }
    std::string const name = "\\\\.\\DISPLAY" + std::to_string(display);
    Machine machine = Overdrive8Board(0);
    machine.Write("ADL2_Adapter_AdapterInfoX3_Get", 2, Ints({3}));
    machine.Allocate("ADL2_Adapter_AdapterInfoX3_Get", 3, Displays({"\\\\.\\NOWHERE1", name, "\\\\.\\NOWHERE2"}));
    machine.Write("ADL2_Adapter_FrameMetrics_Get", 3, {0x00, 0x00, 0x6F, 0x42});  // 59.75
    ASSERT_TRUE(machine.InitAndForget());

    OpenDisplay const before = *Open(display);
    EXPECT_EQ(machine.Api().GetFrameRate(), 59);
    OpenDisplay const after = *Open(display);
    EXPECT_EQ(machine.LastCall("ADL2_Adapter_FrameMetrics_Get").args.at(2), static_cast<int>(before.source));
    // Handles are numbered as they are given out. What was opened between these two is closed already.
    for (UINT handle = before.handle + 1; handle < after.handle && handle < before.handle + 100; ++handle) {
        EXPECT_NE(Thunk(kClose, handle), 0) << handle - before.handle;
    }
    EXPECT_EQ(machine.TakeLog(), Lines({
                                     "[OD8Helper::GetFrameRate()] numAdapters ... 3",
                                     "[OD8Helper::GetFrameRate()] dispDeviceName ... \\\\.\\NOWHERE1",
                                     "[OD8Helper::GetFrameRate()] dispDeviceName ... " + name,
                                     "[OD8Helper::GetFrameRate()] D3DKMTOpenAdapterFromGdiDisplayName ... 0",
                                     "[OD8Helper::GetFrameRate()] current fps ... 59.750000",
                                 }));
}

}  // namespace
}  // namespace gputune::test

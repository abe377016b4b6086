// The frame rate where the display kernel is the system's own, which needs a display (under Wine, a DISPLAY that can be
// opened), and where it is one of the test's.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "ImportHook.h"
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

TEST(FrameRateDisplay, IsAskedAboutTheSourceThatTheSystemGives) {
    int const display = LastDisplay();
    if (display == 0) {
        GTEST_SKIP() << "no display that can be opened";
    }
    std::string const name = "\\\\.\\DISPLAY" + std::to_string(display);
    Machine machine = Overdrive8Board(0);
    OrderDisplays(machine, {"\\\\.\\NOWHERE1", name, "\\\\.\\NOWHERE2"});
    machine.Reports(FrameRate{.perSecond = 59.75F});
    ASSERT_TRUE(machine.InitAndForget());

    OpenDisplay const before = *Open(display);
    EXPECT_EQ(machine.Api().GetFrameRate(), 59);
    OpenDisplay const after = *Open(display);
    EXPECT_EQ(TakeAmdTraffic(machine).back(), "Adapter_FrameMetrics_Get 5 #" + std::to_string(before.source));
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

// A display kernel that opens every name, with these numbers.
constexpr UINT kHandle = 0x40000140;
constexpr UINT kSource = 7;

Machine* g_machine = nullptr;
std::vector<std::wstring> g_opened;  // the names, of 32 characters or up to their end
std::vector<UINT> g_closed;
Lines g_logAtClose;

LONG WINAPI OpenAny(OpenDisplay* open) {
    g_opened.emplace_back(open->name, ::wcsnlen(open->name, 32));
    open->handle = kHandle;
    open->source = kSource;
    return 0;
}

LONG WINAPI CloseAny(UINT const* handle) {
    g_closed.push_back(*handle);
    g_logAtClose = g_machine->TakeLog();
    return 0;
}

FARPROC WINAPI FindSymbol(HMODULE library, LPCSTR name) {
    bool const isName = reinterpret_cast<ULONG_PTR>(name) > 0xFFFF;
    if (isName && std::strcmp(name, kOpen) == 0) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&OpenAny));
    }
    if (isName && std::strcmp(name, kClose) == 0) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&CloseAny));
    }
    return ::GetProcAddress(library, name);
}

TEST(FrameRateDisplay, IsOpenedByUpTo32CharactersAndClosedBehindTheEntryThatSaysSo) {
    Machine machine = Overdrive8Board(0).Started();
    machine.Api().GetFrameRate();
    machine.TakeLog();
    ImportHook const hook("GetProcAddress", &FindSymbol);
    g_machine = &machine;
    std::string const name = "\\\\.\\DISPLAY-abcdefghijklmnopqrstu";
    ASSERT_EQ(name.size(), 33U);
    for (std::size_t const length : {31U, 32U, 33U}) {
        SCOPED_TRACE(length);
        g_opened.clear();
        g_closed.clear();
        OrderDisplays(machine.Then("ADL2_Adapter_AdapterInfoX3_Get"), {name.substr(0, length)});
        EXPECT_EQ(machine.Api().GetFrameRate(), 0);
        std::string const looked = name.substr(0, std::min<std::size_t>(length, 32));
        EXPECT_EQ(g_opened, std::vector<std::wstring>({std::wstring(looked.begin(), looked.end())}));
        EXPECT_EQ(g_closed, std::vector<UINT>({kHandle}));
        EXPECT_EQ(TakeAmdTraffic(machine).back(), "Adapter_FrameMetrics_Get 5 #" + std::to_string(kSource));
        ASSERT_FALSE(g_logAtClose.empty());
        EXPECT_EQ(g_logAtClose.back(), "[OD8Helper::GetFrameRate()] D3DKMTOpenAdapterFromGdiDisplayName ... 0");
        EXPECT_EQ(machine.TakeLog(), Lines({"[OD8Helper::GetFrameRate()] current fps ... 0.000000"}));
    }
    g_machine = nullptr;
}

}  // namespace
}  // namespace gputune::test

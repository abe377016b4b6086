// What loading, using and unloading the library leaves as it is: settings of the process and of the calling thread that
// the start-up code of compilers likes to change.
#include <gtest/gtest.h>

#include <clocale>
#include <ostream>

#include "boards.h"
#include "machine_windows.h"

namespace gputune::test {
namespace {

struct State {
    unsigned short x87 = 0;
    unsigned sse = 0;
    UINT errorMode = 0;
    LPTOP_LEVEL_EXCEPTION_FILTER filter = nullptr;
    std::string locale;

    bool operator==(State const&) const = default;
};

void PrintTo(State const& state, std::ostream* stream) {
    *stream << std::hex << "x87 " << state.x87 << ", SSE " << state.sse << ", error mode " << state.errorMode
            << ", filter " << reinterpret_cast<void*>(state.filter) << ", locale " << state.locale;
}

LONG WINAPI HostsFilter(EXCEPTION_POINTERS* /*exception*/) {
    return EXCEPTION_CONTINUE_SEARCH;
}

// None of them the usual: 24 bits of precision, rounding up, denormals are zero.
void SetUnusual() {
    constexpr unsigned short kX87 = 0x087F;
    constexpr unsigned kSse = 0x5FC0;
    __asm__ volatile("fldcw %0" : : "m"(kX87));
    __asm__ volatile("ldmxcsr %0" : : "m"(kSse));
    ::SetErrorMode(SEM_NOOPENFILEERRORBOX);
    ::SetUnhandledExceptionFilter(HostsFilter);
    std::setlocale(LC_ALL, "");
}

State Now() {
    State state;
    __asm__ volatile("fnstcw %0" : "=m"(state.x87));
    __asm__ volatile("stmxcsr %0" : "=m"(state.sse));
    state.sse &= 0xFFC0;  // without the flags of what has been calculated
    state.errorMode = ::GetErrorMode();
    state.filter = ::SetUnhandledExceptionFilter(HostsFilter);
    state.locale = std::setlocale(LC_ALL, nullptr);
    return state;
}

TEST(Footprint, SettingsOfTheHostStayAsTheyAre) {
    Machine machine = OverdriveNBoard();
    SetUnusual();
    State const before = Now();
    ASSERT_NE(LibraryUnderTest(), nullptr);
    EXPECT_EQ(Now(), before) << "loaded";
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    EXPECT_EQ(Now(), before) << "used";
    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    EXPECT_EQ(Now(), before) << "unloaded";
}

}  // namespace
}  // namespace gputune::test

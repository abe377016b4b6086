// What a 64-bit test promises itself: nothing that it or the library under test gets lies below 4 GiB, so that a
// pointer or a handle that was cut to 32 bits is another one.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <thread>

#include "boards.h"
#include "intel_board.h"
#include "machine_windows.h"
#include "nvidia_board.h"

namespace gputune::test {
namespace {

template <class Pointer>
bool IsHigh(Pointer pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer) >> 32 != 0;
}

TEST(HighMemory, HasTheHeaps) {
    // Keeps what it gets: of equal blocks, the first would be the only one that is looked at.
    for (std::size_t size = 1; size <= std::size_t{1} << 24; size += size / 2 + 1) {
        for (int times = 0; times < 16; ++times) {
            ASSERT_TRUE(IsHigh(std::malloc(size))) << size;
            ASSERT_TRUE(IsHigh(::operator new(size))) << size;
            ASSERT_TRUE(IsHigh(::HeapAlloc(::GetProcessHeap(), 0, size))) << size;
        }
        ASSERT_TRUE(IsHigh(::VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS))) << size;
    }
}

TEST(HighMemory, HasTheStacks) {
    int local = 0;
    EXPECT_TRUE(IsHigh(&local));
    std::thread([] {
        int another = 0;
        EXPECT_TRUE(IsHigh(&another));
    }).join();
}

TEST(HighMemory, HasTheLibrariesAndWhatTheyHandOut) {
    Machine machine = OverdriveNBoard();
    machine.Add(Machine::Library::Intel).Add(Machine::Library::Nvidia);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(IsHigh(LibraryUnderTest()));
    for (auto const library : {Machine::Library::AmdNewer, Machine::Library::Intel, Machine::Library::Nvidia}) {
        EXPECT_TRUE(IsHigh(::GetModuleHandleA(host::FileName(library).c_str())));
    }
    EXPECT_TRUE(IsHigh(static_cast<std::uintptr_t>(ScriptedHandle(1))));
    // Out of the library under test, for its lists.
    for (int const size : {16, 1580, 100'000}) {
        EXPECT_TRUE(IsHigh(machine.Scripted().AskForMemory(size)));
    }
}

}  // namespace
}  // namespace gputune::test

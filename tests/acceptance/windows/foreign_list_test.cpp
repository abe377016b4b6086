// An adapter list that the AMD library did not take from the allocation callback: no more of it is read than can be.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "boards.h"

namespace gputune::test {
namespace {

constexpr std::size_t kPage = 4096;
constexpr int kRecord = 1580;

// Two pages, the second with a protection of its own.
unsigned char* TwoPages(DWORD secondProtection) {
    auto* const pages =
        static_cast<unsigned char*>(::VirtualAlloc(nullptr, 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    DWORD former = 0;
    EXPECT_TRUE(::VirtualProtect(pages + kPage, kPage, secondProtection, &former));
    return pages;
}

// A machine whose library reports `count` adapters at this address.
Machine WithListAt(void const* list, int count) {
    Machine machine;
    machine.Captions({L"AMD Radeon RX 580 Series"});
    OrderAdaptersAt(machine, count, list);
    machine.Reports(ActiveStatus{1}).Reports(OverdriveVersion{8});
    return machine;
}

Bytes OneAdapter(int index) {
    return AdapterList({{.index = index, .udid = "none", .bus = 1, .name = "Board"}});
}

TEST(ForeignAdapterList, CountBeyondTheReadableMemoryIsCutToIt) {
    unsigned char* const pages = TwoPages(PAGE_NOACCESS);
    unsigned char* const list = pages + kPage - kRecord;
    std::memcpy(list, OneAdapter(5).data(), kRecord);
    Machine machine = WithListAt(list, 1000);
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.CountOf("ADL2_Adapter_Active_Get"), 1);
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 5);
}

TEST(ForeignAdapterList, ListAcrossPagesOfDifferentProtectionIsReadToItsEnd) {
    unsigned char* const pages = TwoPages(PAGE_READWRITE);
    unsigned char* const list = pages + kPage - kRecord;
    std::memcpy(list, OneAdapter(5).data(), kRecord);
    std::memcpy(list + kRecord, OneAdapter(6).data(), kRecord);
    DWORD former = 0;
    ASSERT_TRUE(::VirtualProtect(pages + kPage, kPage, PAGE_READONLY, &former));
    Machine machine = WithListAt(list, 2);
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.CountOf("ADL2_Adapter_Active_Get"), 2);
    EXPECT_TRUE(machine.Api().SetActiveAdapterIndex(6));
}

TEST(ForeignAdapterList, AddressOfNothingIsNoAdapter) {
    Machine machine = WithListAt(reinterpret_cast<void const*>(std::intptr_t{16}), 1);
    EXPECT_FALSE(machine.Init());
    Lines const log = machine.TakeLog();
    EXPECT_NE(std::find(log.begin(), log.end(), "[ADL::InitADL()] ... No available adapter"), log.end());
}

}  // namespace
}  // namespace gputune::test

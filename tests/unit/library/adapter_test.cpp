// What backends share: the table of readings, and the memory that AMD's library hands out lists in.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <vector>

#include "adapter/HwmValueTable.h"
#include "amd/adl_memory.h"

namespace gputune {
namespace {

constexpr char const* kNames[] = {
    "GPU Core Clock",
    "GPU Memory Clock",
    "GPU Temperature",
    "GPU HotSpot Temperature",
    "GPU Memory Temperature",
    "Fan Speed(%)",
    "Fan Speed(RPM)",
    "GPU Load",
    "Memory Controller Load",
    "GPU only Power Draw",
    "VDDC Power Draw",
    "VDDCI Power Draw",
    "VRM Efficiency",
    "Memory Usage",
    "Memory Usage (Dedicated)",
    "Memory Usage (Dynamic)",
    "VDDC",
    "CPU Usage",
    "CPU Frequency",
    "Temperature Limit",
    "TDP Limit",
};

// Compares every byte of the entry, so that no other field is set.
void ExpectEntry(HwmValue const* entry, double value, char const* name, bool valid) {
    ASSERT_NE(entry, nullptr);
    unsigned char expected[sizeof(HwmValue)] = {};
    std::memcpy(expected, &value, sizeof value);
    std::memcpy(expected + 8, name, std::strlen(name));
    expected[264] = valid ? 1 : 0;
    EXPECT_EQ(std::memcmp(entry, expected, sizeof expected), 0)
        << entry->Value << ' ' << entry->Name << ' ' << entry->Valid;
}

TEST(HwmValueTable, StartsWithTwentyOneEntriesNeverRead) {
    HwmValueTable const table;
    for (int key = 0; key < 21; ++key) {
        SCOPED_TRACE(key);
        ExpectEntry(table.Find(key), -1.0, "", false);
    }
}

TEST(HwmValueTable, StoringSetsValueNameAndValid) {
    HwmValueTable table;
    for (int key = 0; key < 21; ++key) {
        table.Store(key, 100.25 + key);
    }
    for (int key = 0; key < 21; ++key) {
        SCOPED_TRACE(key);
        ExpectEntry(table.Find(key), 100.25 + key, kNames[key], true);
        EXPECT_EQ(HwmValueName(key), kNames[key]);
    }
}

TEST(HwmValueTable, KeysItDoesNotHoldAreNeitherFoundNorAdded) {
    HwmValueTable table;
    for (int const key : {INT_MIN, -1, 21, 22, INT_MAX}) {
        SCOPED_TRACE(key);
        table.Store(key, 5.0);
        EXPECT_EQ(table.Find(key), nullptr);
        EXPECT_EQ(HwmValueName(key), "");
    }
    for (int key = 0; key < 21; ++key) {
        ExpectEntry(table.Find(key), -1.0, "", false);
    }
}

TEST(HwmValueTable, AReadingStaysUntilTheNextOne) {
    HwmValueTable table;
    table.Store(2, 65.5);
    table.Store(3, 70.0);
    ExpectEntry(table.Find(2), 65.5, "GPU Temperature", true);
    table.Store(2, -1.0);
    ExpectEntry(table.Find(2), -1.0, "GPU Temperature", true);
    ExpectEntry(table.Find(3), 70.0, "GPU HotSpot Temperature", true);
}

TEST(AdlMemory, BlocksHaveTheSizeThatWasAskedFor) {
    for (int const size : {1, 2, 31, 1580, 1 << 20}) {
        void* const block = amd::AllocateForAdl(size);
        ASSERT_NE(block, nullptr);
        std::memset(block, 0xAB, static_cast<std::size_t>(size));
        EXPECT_EQ(amd::SizeOfAdlBlock(block), static_cast<std::size_t>(size));
        amd::ReleaseFromAdl(block);
    }
}

TEST(AdlMemory, NoBlockForANegativeSize) {
    for (int const size : {-1, INT_MIN}) {
        EXPECT_EQ(amd::AllocateForAdl(size), nullptr) << size;
    }
}

TEST(AdlMemory, AnEmptyListIsABlock) {
    void* const block = amd::AllocateForAdl(0);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(amd::SizeOfAdlBlock(block), 0U);
    amd::ReleaseFromAdl(block);
}

TEST(AdlMemory, ForeignBlocksAreLeftAlone) {
    auto const foreign = std::make_unique<int>(7);
    amd::ReleaseFromAdl(foreign.get());
    amd::ReleaseFromAdl(nullptr);
    EXPECT_EQ(*foreign, 7);
    // Its size is not known, but it is no smaller than what was written.
    EXPECT_GE(amd::SizeOfAdlBlock(foreign.get()), sizeof(int));
}

TEST(AdlMemory, AReleasedBlockIsNoLongerKnown) {
    void* const block = amd::AllocateForAdl(16);
    amd::ReleaseFromAdl(block);
    EXPECT_NE(amd::SizeOfAdlBlock(block), 16U);
    amd::ReleaseFromAdl(block);  // no second release reaches the heap
}

// The records that a list of this count has, as numbers.
std::vector<int> Covered(std::vector<int> const& records, int count) {
    amd::AdlList<int> list;
    if (!records.empty()) {
        int const size = static_cast<int>(records.size() * sizeof(int));
        *list.Out() = static_cast<int*>(amd::AllocateForAdl(size));
        std::copy(records.begin(), records.end(), *list.Out());
    }
    auto const covered = list.First(count);
    return {covered.begin(), covered.end()};
}

TEST(AdlMemory, AListNeverReachesBeyondItsBlock) {
    EXPECT_EQ(Covered({5, 6, 7}, 2), (std::vector{5, 6}));
    EXPECT_EQ(Covered({5, 6, 7}, 3), (std::vector{5, 6, 7}));
    EXPECT_EQ(Covered({5, 6, 7}, 4), (std::vector{5, 6, 7}));
    EXPECT_EQ(Covered({5, 6, 7}, INT_MAX), (std::vector{5, 6, 7}));
    EXPECT_EQ(Covered({5, 6, 7}, 0), std::vector<int>{});
    EXPECT_EQ(Covered({5, 6, 7}, -1), std::vector<int>{});
    EXPECT_EQ(Covered({}, 3), std::vector<int>{});
}

TEST(AdlMemory, AListOfAnotherOriginIsTakenAtItsWordAndNotReleased) {
    std::vector<int> records = {5, 6, 7};
    {
        amd::AdlList<int> list;
        *list.Out() = records.data();
        EXPECT_EQ(list.First(3).size(), 3U);
    }
    EXPECT_EQ(records, (std::vector{5, 6, 7}));
}

}  // namespace
}  // namespace gputune

// Which devices count, and what their states mean.
#include "tool/system/DevicePower.h"

#include <gtest/gtest.h>

#include "gputune.h"

using namespace gputune::tool;

namespace {

constexpr char const* kAmd = "PCI\\VEN_1002&DEV_67DF&SUBSYS_0B361002&REV_E7\\4&2A5F3C8D&0&0008";
constexpr char const* kIntel = "PCI\\VEN_8086&DEV_56A0&SUBSYS_10208086&REV_08\\6&1";
constexpr char const* kNvidia = "PCI\\VEN_10DE&DEV_2484&SUBSYS_00000000&REV_A1\\4&1";
constexpr char const* kRemote = "ROOT\\BASICDISPLAY\\0000";

TEST(DevicePowerTest, StatesOfOneDevice) {
    for (auto const& [state, power] :
         std::initializer_list<std::pair<std::optional<int>, std::optional<bool>>>{{1, true},
                                                                                   {2, false},
                                                                                   {3, false},
                                                                                   {4, false},
                                                                                   {0, std::nullopt},
                                                                                   {5, std::nullopt},
                                                                                   {-1, std::nullopt},
                                                                                   {std::nullopt, std::nullopt}}) {
        EXPECT_EQ(AnyHasPower({{kAmd, state}}, GPUTUNE_VENDOR_AMD), power) << state.value_or(-2);
    }
}

TEST(DevicePowerTest, OnlyDevicesOfTheVendorCount) {
    std::vector<DisplayDevice> const devices = {{kIntel, 1}, {kNvidia, 4}, {kRemote, 1}};
    EXPECT_EQ(AnyHasPower(devices, GPUTUNE_VENDOR_INTEL), true);
    EXPECT_EQ(AnyHasPower(devices, GPUTUNE_VENDOR_NVIDIA), false);
    EXPECT_EQ(AnyHasPower(devices, GPUTUNE_VENDOR_AMD), std::nullopt);
    EXPECT_EQ(AnyHasPower({}, GPUTUNE_VENDOR_AMD), std::nullopt);
}

TEST(DevicePowerTest, BeforeTheVendorIsKnownAnyDeviceOfThemCounts) {
    EXPECT_EQ(AnyHasPower({{kIntel, 1}, {kNvidia, 4}}, GPUTUNE_VENDOR_UNKNOWN), true);
    EXPECT_EQ(AnyHasPower({{kNvidia, 4}, {kRemote, 1}}, GPUTUNE_VENDOR_UNKNOWN), false);
    EXPECT_EQ(AnyHasPower({{kRemote, 4}}, GPUTUNE_VENDOR_UNKNOWN), std::nullopt);
}

TEST(DevicePowerTest, OfSeveralDevicesOneThatWorksIsEnough) {
    EXPECT_EQ(AnyHasPower({{kAmd, 4}, {kAmd, 1}}, GPUTUNE_VENDOR_AMD), true);
    EXPECT_EQ(AnyHasPower({{kAmd, 4}, {kAmd, 4}}, GPUTUNE_VENDOR_AMD), false);
    EXPECT_EQ(AnyHasPower({{kAmd, 4}, {kAmd, std::nullopt}}, GPUTUNE_VENDOR_AMD), std::nullopt);
    EXPECT_EQ(AnyHasPower({{kAmd, std::nullopt}, {kAmd, 4}}, GPUTUNE_VENDOR_AMD), std::nullopt);
    EXPECT_EQ(AnyHasPower({{kAmd, std::nullopt}, {kAmd, 1}}, GPUTUNE_VENDOR_AMD), true);
}

TEST(DevicePowerTest, CaseOfTheIdentifierDoesNotMatter) {
    EXPECT_EQ(AnyHasPower({{"pci\\ven_10de&dev_2484", 4}}, GPUTUNE_VENDOR_NVIDIA), false);
    EXPECT_EQ(AnyHasPower({{"PCI\\VEN_10DE0&DEV_2484", 4}}, GPUTUNE_VENDOR_NVIDIA), std::nullopt);
}

}  // namespace

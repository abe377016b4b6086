// Which vendor the captions of the display controllers give, and what the log says about them.
#include <gtest/gtest.h>

#include "boards.h"

namespace gputune::test {
namespace {

enum Vendor : std::uint32_t { kUnknown = 0, kAmd = 1, kIntel = 2, kNvidia = 3 };

using Captions = std::vector<std::wstring>;

struct Row {
    Captions captions;
    Vendor vendor;
};

// Without a vendor's library; the start of Intel and NVIDIA boards succeeds all the same.
void ExpectVendors(std::vector<Row> const& rows) {
    Machine machine(Machine::Library::None);
    for (std::size_t index = 0; index < rows.size(); ++index) {
        SCOPED_TRACE("row " + std::to_string(index));
        machine.Captions(rows[index].captions);
        Vendor const vendor = rows[index].vendor;
        EXPECT_EQ(machine.Init(GPUTUNE_LOG_NONE), vendor == kIntel || vendor == kNvidia);
        EXPECT_EQ(static_cast<std::uint32_t>(machine.Api().GetVendorInfo()), vendor);
    }
}

TEST(Detection, TheProductLineInTheCaptionDecides) {
    ExpectVendors({
        {{L"AMD Radeon RX 6800 XT"}, kAmd},
        {{L"Radeon (TM) RX 480 Graphics"}, kAmd},
        {{L"Intel(R) Arc(TM) A770 Graphics"}, kIntel},
        {{L"NVIDIA GeForce RTX 4070"}, kNvidia},
        {{L"NVIDIA Quadro P400"}, kNvidia},
    });
}

TEST(Detection, OtherControllersHaveNoVendor) {
    ExpectVendors({
        {{}, kUnknown},
        {{L""}, kUnknown},
        {{L"AMD Radeon(TM) Graphics"}, kUnknown},
        {{L"AMD Radeon HD 7970"}, kUnknown},
        {{L"AMD Custom GPU RX"}, kUnknown},  // the line without its brand
        {{L"Intel(R) UHD Graphics 770"}, kUnknown},
        {{L"GeForce RTX 4070"}, kUnknown},
        {{L"Microsoft Basic Display Adapter"}, kUnknown},
        {{L"VideoController1"}, kUnknown},
        {{L"RADEO N RX", L"AR C", L"NVIDI A"}, kUnknown},
    });
}

TEST(Detection, CaseDoesNotMatter) {
    ExpectVendors({
        {{L"amd radeon rx 6800 xt"}, kAmd},
        {{L"RADEON RX"}, kAmd},
        {{L"rAdEoN rX"}, kAmd},
        {{L"intel(r) arc(tm) a770 graphics"}, kIntel},
        {{L"nvidia geforce rtx 4070"}, kNvidia},
        {{L"nViDiA"}, kNvidia},
    });
}

TEST(Detection, TheWordsMayStandAnywhereEvenInsideOthers) {
    ExpectVendors({
        {{L"RXRADEON"}, kAmd},
        {{L"xxradeonrxxx"}, kAmd},
        {{L"Matrox Millennium for MARCH"}, kIntel},  // "ARC"
        {{L"ASPEED NVIDIA-compatible"}, kNvidia},
        {{L"NVIDIA ARC"}, kIntel},  // the Intel line is looked for first
        {{L"\x00E4\x4E2D NVIDIA \x00DF"}, kNvidia},
        {{std::wstring(L"a\0NVIDIA", 8)}, kNvidia},
    });
}

TEST(Detection, ARadeonWithoutRxIsNeverAnotherVendors) {
    ExpectVendors({
        {{L"Radeon Arc"}, kUnknown},
        {{L"Radeon NVIDIA"}, kUnknown},
        {{L"Radeon Arc RX"}, kAmd},
        {{L"NVIDIA Radeon RX"}, kAmd},
    });
}

TEST(Detection, TheFirstSupportedControllerDecides) {
    ExpectVendors({
        {{L"AMD Radeon(TM) Graphics", L"NVIDIA GeForce RTX 3060"}, kNvidia},
        {{L"Intel(R) UHD Graphics 770", L"AMD Radeon RX 580 Series"}, kAmd},
        {{L"Intel(R) UHD Graphics 770", L"Intel(R) Arc(TM) A380 Graphics"}, kIntel},
        {{L"NVIDIA GeForce GTX 1080", L"AMD Radeon RX 580 Series"}, kNvidia},
        {{L"AMD Radeon RX 580 Series", L"NVIDIA GeForce GTX 1080"}, kAmd},
        {{L"", L"", L"Intel(R) Arc(TM) A380 Graphics", L"NVIDIA"}, kIntel},
        // The words of one line on two controllers.
        {{L"AMD Radeon(TM) Graphics", L"RX"}, kUnknown},
    });
}

TEST(Detection, LogListsTheControllersBetweenTwoLines) {
    struct LogRow {
        Captions captions;
        Lines lines;
    };
    std::string const begin = "[GetVendor()] >>>>>>> display devices";
    std::string const end = "[GetVendor()] <<<<<<< display devices";
    LogRow const rows[] = {
        {{}, {begin, end, "[GetVendor()] ... UNKNOWN"}},
        {{L"Intel(R) UHD Graphics 770"}, {begin, "Intel(R) UHD Graphics 770", end, "[GetVendor()] ... UNKNOWN"}},
        // As the system spells them, also those behind the one that decides.
        {{L"AMD Radeon(TM) Graphics", L"nvidia GeForce RTX 3060", L"Intel(R) Arc(TM) A770 Graphics"},
         {begin, "AMD Radeon(TM) Graphics", "nvidia GeForce RTX 3060", "Intel(R) Arc(TM) A770 Graphics", end,
          "[GetVendor()] ... NVIDIA"}},
        {{L"", L"Intel(R) Arc(TM) A770 Graphics"},
         {begin, "", "Intel(R) Arc(TM) A770 Graphics", end, "[GetVendor()] ... INTEL"}},
        {{L"AMD Radeon RX 580 Series"}, {begin, "AMD Radeon RX 580 Series", end, "[GetVendor()] ... AMD"}},
    };
    Machine machine(Machine::Library::None);
    for (LogRow const& row : rows) {
        machine.Captions(row.captions);
        machine.Init();
        EXPECT_EQ(DetectionOf(machine.TakeLog()), row.lines);
    }
}

}  // namespace
}  // namespace gputune::test

// How the host tool explains which display controller decides, against the library's own decision.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "detect/GpuVendor.h"
#include "tool/board/Controllers.h"
#include "tool/values/Duration.h"

namespace gputune::tool {
namespace {

std::vector<std::string> const names = {"AMD Radeon RX 6800 XT",
                                        "AMD Radeon(TM) Graphics",
                                        "amd radeon rx vega 11",
                                        "Intel(R) Arc(TM) A770 Graphics",
                                        "Intel(R) UHD Graphics 770",
                                        "NVIDIA GeForce RTX 4070",
                                        "nvidia rtx a2000",
                                        "Radeon Arc NVIDIA",
                                        "Radeon RX Arc NVIDIA",
                                        "Microsoft Basic Display Adapter",
                                        "Arc NVIDIA",
                                        ""};

std::wstring Widened(std::string const& name) {
    return {name.begin(), name.end()};
}

TEST(ToolControllers, JudgesAsTheLibraryDoes) {
    for (std::string const& first : names) {
        EXPECT_EQ(VendorOfController(first), static_cast<std::uint32_t>(VendorOfCaptions(std::vector{Widened(first)})))
            << first;
        for (std::string const& second : names) {
            std::uint32_t taken = 0;
            for (Controller const& controller : ClassifyControllers({first, second})) {
                taken = controller.role == Controller::Role::Taken ? controller.vendor : taken;
            }
            EXPECT_EQ(taken, static_cast<std::uint32_t>(VendorOfCaptions(std::vector{Widened(first), Widened(second)})))
                << first << ", " << second;
        }
    }
}

TEST(ToolControllers, ReadsTheNamesFromTheFirstLookInTheLog) {
    std::string const look =
        "[GetVendor()] >>>>>>> display devices\nOne ... two\nThree\n[GetVendor()] <<<<<<< display devices\n";
    EXPECT_EQ(ControllerNames(ReadLogEntries("[GetWmiData()] x ... y\n" + look + look)),
              std::vector<std::string>({"One ... two", "Three"}));
    EXPECT_EQ(ControllerNames(ReadLogEntries("[GetVendor()] >>>>>>> display devices\nOne\n")),
              std::vector<std::string>());
    EXPECT_EQ(ControllerNames({}), std::vector<std::string>());
}

TEST(ToolControllers, ExplainsOnlyWhatNeedsIt) {
    EXPECT_EQ(ExplainControllers(ClassifyControllers({"AMD Radeon RX 580", "AMD Radeon RX 570"})), "");
    EXPECT_EQ(ExplainControllers({}), "");
    std::string const text = ExplainControllers(ClassifyControllers({"Intel(R) UHD", "NVIDIA A", "Radeon RX"}));
    EXPECT_NE(text.find("Intel(R) UHD: left out: no Radeon RX"), std::string::npos) << text;
    EXPECT_NE(text.find("NVIDIA A: decides for NVIDIA"), std::string::npos) << text;
    EXPECT_NE(text.find("Radeon RX: left out: one vendor's boards"), std::string::npos) << text;
}

TEST(ToolDuration, TakesUnits) {
    EXPECT_EQ(ParseSeconds("90"), 90);
    EXPECT_EQ(ParseSeconds("90s"), 90);
    EXPECT_EQ(ParseSeconds("10m"), 600);
    EXPECT_EQ(ParseSeconds("1.5h"), 5400);
    EXPECT_EQ(ParseSeconds("0.05"), 0.05);
    for (char const* const text : {"", "s", "0,5", "nan", "inf", "-", "1d", "1 s", "1ms", "1e999", "10m5"}) {
        EXPECT_EQ(ParseSeconds(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace gputune::tool

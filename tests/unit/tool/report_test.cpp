// The host tool's results as text and as JSON.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tool/output/Result.h"
#include "tool/values/Text.h"

namespace gputune::tool {
namespace {

TEST(ToolNumber, AtMostTwoDecimalsWithoutTrailingZeros) {
    EXPECT_EQ(FormatNumber(1500.0), "1500");
    EXPECT_EQ(FormatNumber(65.5), "65.5");
    EXPECT_EQ(FormatNumber(1499.999), "1500");
    EXPECT_EQ(FormatNumber(0.126), "0.13");
    EXPECT_EQ(FormatNumber(-0.001), "0");
    EXPECT_EQ(FormatNumber(100.0), "100");
    EXPECT_EQ(FormatNumber(-1.0), "-1");
}

TEST(ToolNumber, NotANumberIsNotAvailable) {
    EXPECT_EQ(FormatNumber(std::numeric_limits<double>::quiet_NaN()), "not available");
    EXPECT_EQ(FormatValue(std::numeric_limits<double>::infinity(), Unit::Celsius), "not available");
}

TEST(ToolNumber, LargestNumberFits) {
    EXPECT_EQ(FormatNumber(std::numeric_limits<double>::max()).size(), 309U);
}

TEST(ToolNumber, ExactFormReadsBack) {
    EXPECT_EQ(FormatExactNumber(65.5), "65.5");
    EXPECT_EQ(FormatExactNumber(0.1), "0.1");
    EXPECT_EQ(FormatExactNumber(1500.0), "1500");
}

TEST(ToolNumber, SinglePrecisionIsGivenInItsOwnDigits) {
    EXPECT_EQ(FormatExactNumber(double{386.67F}), "386.67");
    EXPECT_EQ(FormatExactNumber(double{1.001F}), "1.001");
    EXPECT_EQ(FormatExactNumber(double{-0.1F}), "-0.1");
    // Whole numbers have no noise, and doubles keep what a float could not hold.
    EXPECT_EQ(FormatExactNumber(double{123456792.0F}), "123456792");
    EXPECT_EQ(FormatExactNumber(386.123456789), "386.123456789");
    EXPECT_EQ(FormatExactNumber(0.1), "0.1");
    EXPECT_EQ(FewestDigits(1e300), 1e300);
    EXPECT_TRUE(std::isinf(FewestDigits(std::numeric_limits<double>::infinity())));
    EXPECT_TRUE(std::isnan(FewestDigits(std::numeric_limits<double>::quiet_NaN())));
}

TEST(ToolValue, UnitStandsBesideTheValue) {
    EXPECT_EQ(FormatValue(std::int64_t{40}, Unit::Percent), "40 %");
    EXPECT_EQ(FormatValue(65.5, Unit::Celsius), "65.5 \u00b0C");
    EXPECT_EQ(FormatValue(true, Unit::None), "yes");
    EXPECT_EQ(FormatValue(std::string("AMD"), Unit::None), "AMD");
}

TEST(ToolValue, MissingValueHasNoUnit) {
    EXPECT_EQ(FormatValue({}, Unit::Megahertz), "not available");
    EXPECT_EQ(FormatValue(IntValue(-1), Unit::Megahertz), "not available");
    EXPECT_EQ(FormatValue(IntValue(0), Unit::Megahertz), "0 MHz");
}

TEST(ToolValue, WidthCountsCharactersNotBytes) {
    EXPECT_EQ(DisplayWidth("65 \u00b0C"), 5U);
    EXPECT_EQ(PadRight("\u00b0", 3), "\u00b0  ");
    EXPECT_EQ(PadLeft("\u00b0", 3), "  \u00b0");
    EXPECT_EQ(PadLeft("long", 2), "long");
}

Result PowerReport() {
    Result report;
    report.Add({.key = "power_limit",
                .title = "Power limit",
                .fields = {{"current", "Current", std::int64_t{10}, Unit::Percent},
                           {"temperature_limit", "Temperature limit", Value{}, Unit::Celsius}}});
    return report;
}

TEST(ToolReport, TextAlignsTheValues) {
    EXPECT_EQ(PowerReport().Text(),
              "Power limit\n"
              "  Current            10 %\n"
              "  Temperature limit  not available\n");
}

TEST(ToolReport, JsonHasTheUnitInTheKeyAndNullForMissing) {
    EXPECT_EQ(PowerReport().Json(false),
              "{\"power_limit\":{\"current_percent\":10,\"temperature_limit_celsius\":null}}\n");
}

TEST(ToolReport, SensorsHaveTheUnitBesideTheValue) {
    Result report;
    report.Add({.key = "sensors",
                .title = "Sensors",
                .unitForm = Section::UnitForm::BesideValue,
                .fields = {{"gpu_load", "GPU Load", 12.5, Unit::Raw}}});
    EXPECT_EQ(report.Json(false), "{\"sensors\":{\"gpu_load\":{\"value\":12.5,\"unit\":\"raw\"}}}\n");
}

TEST(ToolReport, JsonGivesSinglePrecisionInItsOwnDigits) {
    Result report;
    report.Add({.key = "",
                .title = "",
                .fields = {{"clock", "", double{386.67F}, Unit::Megahertz}, {"factor", "", double{1.001F}}}});
    EXPECT_EQ(report.Json(false), "{\"clock_mhz\":386.67,\"factor\":1.001}\n");
}

TEST(ToolReport, UnsureValueHasItsReasonBesideIt) {
    auto const section = [](Name const* unsure) {
        Result report;
        report.Add({.key = "sensors",
                    .title = "Sensors",
                    .unitForm = Section::UnitForm::BesideValue,
                    .fields = {{.key = "fan_speed",
                                .label = "Fan",
                                .value = 0.0,
                                .unit = Unit::Rpm,
                                .canBeUnsure = true,
                                .unsure = unsure}}});
        return report;
    };
    EXPECT_EQ(section(&kUnsureFan).Json(false),
              "{\"sensors\":{\"fan_speed\":{\"value\":0.0,\"unit\":\"rpm\",\"unsure\":\"stopped_or_steady\"}}}\n");
    EXPECT_EQ(section(nullptr).Json(false),
              "{\"sensors\":{\"fan_speed\":{\"value\":0.0,\"unit\":\"rpm\",\"unsure\":null}}}\n");
    EXPECT_EQ(section(&kUnsureFan).Text(), std::string("Sensors\n  Fan  0 rpm (") + kUnsureFan.text + ")\n");
    EXPECT_EQ(section(nullptr).Text(), "Sensors\n  Fan  0 rpm\n");
}

TEST(ToolReport, MissingSectionIsNull) {
    Result report;
    report.Add({.key = "fan", .title = "Fan", .available = false});
    EXPECT_EQ(report.Json(false), "{\"fan\":null}\n");
    EXPECT_EQ(report.Text(), "Fan: not available\n");
}

TEST(ToolReport, ChangeIsNamedFirst) {
    Result report = PowerReport();
    report.SetDone("power set", "Set the power limit to 10 %.");
    EXPECT_TRUE(report.Json(false).starts_with("{\"command\":\"power set\",\"done\":true,\"power_limit\":"));
    EXPECT_TRUE(report.Text().starts_with("Set the power limit to 10 %.\nPower limit\n"));
}

TEST(ToolReport, FieldsWithoutASectionBelongToTheObject) {
    Result report;
    report.Add({.key = "", .title = "", .fields = {{"vendor", "Vendor", std::string("amd")}}});
    EXPECT_EQ(report.Json(false), "{\"vendor\":\"amd\"}\n");
    EXPECT_EQ(report.Text(), "  Vendor  amd\n");
}

Grid PointGrid(Value speed) {
    return {.key = "points",
            .label = "Settings of the points",
            .columns = {{"point", "Point"}, {"speed", "Speed", Unit::Percent}},
            .rows = {{std::int64_t{1}, std::move(speed)}, {std::int64_t{2}, Value{}}}};
}

TEST(ToolReport, GridIsATableAndAnArray) {
    Result report;
    report.Add({.key = "fan", .title = "Fan", .grids = {PointGrid(std::int64_t{100})}});
    EXPECT_EQ(report.Text(),
              "Fan\n"
              "  Point  Speed\n"
              "  1      100 %\n"
              "  2      not available\n");
    EXPECT_EQ(report.Json(false),
              "{\"fan\":{\"points\":[{\"point\":1,\"speed_percent\":100},{\"point\":2,\"speed_percent\":null}]}}\n");
}

TEST(ToolReport, GridWithoutAnyValueIsOneLine) {
    Result report;
    report.Add({.key = "fan", .title = "Fan", .grids = {PointGrid({})}});
    EXPECT_EQ(report.Text(), "Fan\n  Settings of the points  not available\n");
}

TEST(ToolReport, TextThatIsNoUtf8IsReplacedInJson) {
    Result report;
    report.Add({.key = "", .title = "", .fields = {{"name", "Name", std::string("a\xae")}}});
    EXPECT_EQ(report.Json(false), "{\"name\":\"a\ufffd\"}\n");
}

}  // namespace
}  // namespace gputune::tool

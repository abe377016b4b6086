// What the host tool says of a change, from what the board shows and from what the library logged.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tool/board/FanAnswers.h"
#include "tool/board/ReadBack.h"
#include "tool/output/ErrorJson.h"
#include "tool/output/Result.h"

namespace gputune::tool {
namespace {

using Strings = std::vector<std::string>;

TEST(ToolReadBack, EqualValuesConfirmTheChange) {
    ReadBack readBack;
    readBack.Compare("power limit", 10, 10.0, Unit::Percent);
    EXPECT_TRUE(readBack.IsDone());
    EXPECT_EQ(readBack.Confirmed(), std::optional(true));
    EXPECT_EQ(readBack.Problems(), Strings());
}

TEST(ToolReadBack, DifferencesAreTold) {
    ReadBack readBack;
    readBack.Compare("power limit", 10, 0.0, Unit::Percent);
    readBack.Compare("temperature limit", 80, 84.0, Unit::Celsius);
    readBack.Compare("GPU clock", 1300, 1300.0, Unit::Megahertz);
    EXPECT_FALSE(readBack.IsDone());
    EXPECT_EQ(readBack.Confirmed(), std::optional(false));
    EXPECT_EQ(readBack.Problems(), Strings({"The board shows 0 % instead of 10 % (power limit) and 84 \u00b0C instead "
                                            "of 80 \u00b0C (temperature limit)."}));
}

TEST(ToolReadBack, ToleranceTakesInWhatRoundingCutsOff) {
    ReadBack readBack;
    readBack.Compare("GPU clock", 1300, 1299.0, Unit::Megahertz, kClockTolerance);
    EXPECT_EQ(readBack.Confirmed(), std::optional(true));
    readBack.Compare("GPU clock", 1300, 1298.0, Unit::Megahertz, kClockTolerance);
    EXPECT_EQ(readBack.Confirmed(), std::optional(false));
}

TEST(ToolReadBack, WhatTheBoardDoesNotTellIsNotConfirmed) {
    ReadBack readBack;
    EXPECT_EQ(readBack.Confirmed(), std::nullopt) << "nothing was compared";
    readBack.Compare("memory clock", 1900, std::nullopt, Unit::Megahertz);
    EXPECT_TRUE(readBack.IsDone());
    EXPECT_EQ(readBack.Confirmed(), std::nullopt);
    EXPECT_EQ(readBack.Unreported(), "") << "nothing of it is told";
    readBack.Compare("GPU clock", 1300, 1300.0, Unit::Megahertz);
    EXPECT_EQ(readBack.Confirmed(), std::nullopt);
    EXPECT_EQ(readBack.Unreported(), "the memory clock");
}

TEST(ToolReadBack, ResultTellsTheOutcome) {
    Result result;
    result.SetOutcome("fan set", "", {.done = false, .confirmed = false, .problems = {"Fan 1 refused it: 5."}});
    EXPECT_EQ(result.Json(false),
              R"({"command":"fan set","done":false,"confirmed":false,"problems":["Fan 1 refused it: 5."]})"
              "\n");
    result.SetOutcome("fan set", "Sent.", {.done = true});
    EXPECT_EQ(result.Json(false), R"({"command":"fan set","done":true,"confirmed":null,"problems":[]})"
                                  "\n");
    EXPECT_EQ(result.Text(), "Sent.\n");
}

TEST(ToolReadBack, ErrorHasEveryKey) {
    EXPECT_EQ(ErrorJson(ToolError("No.").Details(), "No."),
              R"({"error":{"code":"failed","message":"No.","range":null,"expected_points":null,"adapters":null,)"
              R"("controllers":null}})"
              "\n");
    ErrorDetails const details{.code = "out_of_range", .range = ErrorDetails::Range{-50, 50, Unit::Percent}};
    EXPECT_NE(ErrorJson(details, "").find(R"("range":{"minimum":-50,"maximum":50,"unit":"percent"})"),
              std::string::npos);
}

// ---- The library's log ----

TEST(ToolLogEntries, LinesBecomeTagsAndMessages) {
    LogEntries const entries = ReadLogEntries("[A()] tag ... 15.500000 %\r\nno message\r\n[B()] ... cut of");
    ASSERT_EQ(entries.size(), 2U) << "a line that is not complete is left out";
    EXPECT_EQ(entries[0].tag, "[A()] tag");
    EXPECT_EQ(entries[0].message, "15.500000 %");
    EXPECT_EQ(entries[1].tag, "no message");
    EXPECT_EQ(entries[1].message, "");
    EXPECT_EQ(LastMessage(entries, " tag"), "15.500000 %");
    EXPECT_EQ(LastMessage(entries, "absent"), std::nullopt);
    EXPECT_EQ(LeadingNumber("15.500000 %"), std::optional(15.5));
    EXPECT_EQ(LeadingNumber("error: 5"), std::nullopt);
    EXPECT_EQ(NumberBehind("plan GpuClock=1400, GpuVol=1100", "GpuVol="), std::optional(1100));
    EXPECT_EQ(NumberBehind("plan", "GpuVol="), std::nullopt);
}

FanAnswers Answers(std::string const& text) {
    return ReadFanAnswers(ReadLogEntries(text));
}

TEST(ToolFanAnswers, EachFanHasItsOwn) {
    FanAnswers const answers = Answers(
        "[IGCLHelper::SetFanSpeed(int)] ... begin\n"
        "[IGCLHelper::SetFanSpeed(int)] ... For fan handle 0\n"
        "[IGCLHelper::SetFanSpeed(int)] ctlFanSetFixedSpeedMode ... set to 60\n"
        "[IGCLHelper::SetFanSpeed(int)] ... For fan handle 1\n"
        "[IGCLHelper::SetFanSpeed(int)] ctlFanSetSpeedTableMode ... error: 7 ([Name])\n"
        "[IGCLHelper::SetFanSpeed(int)] (verify) mode ... 0\n"
        "[IGCLHelper::SetFanSpeed(int)] ... For fan handle 2\n"
        "[IGCLHelper::SetFanSpeed(int)] ?????\n"
        "[IGCLHelper::SetFanSpeed(int)] ... For fan handle 3\n"
        "[IGCLHelper::SetFanSpeed(int)] ctlFanGetProperties ... error: 8 ([Other])\n");
    ASSERT_EQ(answers.fans.size(), 4U);
    EXPECT_EQ(answers.Count(FanAnswer::Kind::Accepted), 1U);
    EXPECT_EQ(answers.Problems(), Strings({"Fan 2 refused it: 7 ([Name]).",
                                           "Fan 3 takes neither fixed speeds nor curves in a way that is known.",
                                           "Fan 4 refused it: 8 ([Other])."}));
}

TEST(ToolFanAnswers, CurvesAndDefaultsAreTaken) {
    EXPECT_EQ(Answers("[IGCLHelper::SetFanSpeedTable(obj,int)] ... For fan handle 0\n"
                      "[IGCLHelper::SetFanSpeedTable(obj,int)] fan table ... set\n")
                  .Count(FanAnswer::Kind::Accepted),
              1U);
    EXPECT_EQ(Answers("[IGCLHelper::SetFanDefault()] ... For fan handle 0\n"
                      "[IGCLHelper::SetFanDefault()] fan handle #0 ... set to default\n")
                  .Count(FanAnswer::Kind::Accepted),
              1U);
    FanAnswers const kUntouched = Answers("[IGCLHelper::SetFanSpeedTable(obj,int)] ... For fan handle 0\n");
    EXPECT_EQ(kUntouched.Problems(), Strings({"Fan 1 takes no curve."}));
}

TEST(ToolFanAnswers, WrongNumberOfPointsNamesTheRightOne) {
    EXPECT_EQ(Answers("[IGCLHelper::SetFanSpeedTable(obj,int)] ... For fan handle 0\n"
                      "[IGCLHelper::SetFanSpeedTable(obj,int)] nCount not match ... max ponint: 8\n")
                  .expectedPoints,
              std::optional(8));
}

}  // namespace
}  // namespace gputune::tool

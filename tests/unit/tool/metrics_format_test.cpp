// Which format a scrape gets.
#include <gtest/gtest.h>

#include "tool/serve/MetricsText.h"

using namespace gputune::tool;

namespace {

constexpr MetricsFormat kOld = MetricsFormat::Prometheus;
constexpr MetricsFormat kOpen = MetricsFormat::OpenMetrics;

TEST(MetricsFormatTest, WhatPrometheusAsksFor) {
    // Of two generations.
    EXPECT_EQ(
        ChooseFormat("application/openmetrics-text;version=1.0.0,application/openmetrics-text;version=0.0.1;q=0.75,"
                     "text/plain;version=0.0.4;q=0.5,*/*;q=0.1"),
        kOpen);
    EXPECT_EQ(ChooseFormat("application/openmetrics-text;version=1.0.0;escaping=allow-utf-8;q=0.6,"
                           "application/openmetrics-text;version=0.0.1;q=0.5,text/plain;version=1.0.0;"
                           "escaping=allow-utf-8;q=0.4,text/plain;version=0.0.4;q=0.3,*/*;q=0.2"),
              kOpen);
    EXPECT_EQ(ChooseFormat("text/plain;version=0.0.4;q=1,*/*;q=0.1"), kOld);
}

TEST(MetricsFormatTest, WhatBrowsersAndOthersAskFor) {
    EXPECT_EQ(ChooseFormat("text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8"), kOld);
    EXPECT_EQ(ChooseFormat("*/*"), kOld);
    EXPECT_EQ(ChooseFormat(""), kOld);
    EXPECT_EQ(ChooseFormat("text/plain"), kOld);
    EXPECT_EQ(ChooseFormat("text/*"), kOld);
    EXPECT_EQ(ChooseFormat("application/*"), kOld);
    EXPECT_EQ(ChooseFormat("application/json"), kOld);
}

TEST(MetricsFormatTest, TheBetterQualityWins) {
    EXPECT_EQ(ChooseFormat("application/openmetrics-text;q=0.4,text/plain;q=0.5"), kOld);
    EXPECT_EQ(ChooseFormat("application/openmetrics-text;q=0.5,text/plain;q=0.4"), kOpen);
    EXPECT_EQ(ChooseFormat("text/plain;q=0.4, application/openmetrics-text; q=0.5"), kOpen);
    EXPECT_EQ(ChooseFormat("text/plain,application/openmetrics-text"), kOld);
    EXPECT_EQ(ChooseFormat("application/openmetrics-text,*/*"), kOpen);
    EXPECT_EQ(ChooseFormat("application/openmetrics-text;q=0.1,*/*;q=0.2"), kOld);
}

TEST(MetricsFormatTest, QualityOfNothingIsNo) {
    EXPECT_EQ(ChooseFormat("application/openmetrics-text;q=0"), kOld);
    EXPECT_EQ(ChooseFormat("application/openmetrics-text;q=0.000,text/plain;q=0"), kOld);
    EXPECT_EQ(ChooseFormat("application/openmetrics-text,text/plain;q=0"), kOpen);
}

TEST(MetricsFormatTest, OtherVersionsAreOtherFormats) {
    EXPECT_EQ(ChooseFormat("application/openmetrics-text;version=2.0.0"), kOld);
    EXPECT_EQ(ChooseFormat("application/openmetrics-text;version=0.0.1"), kOld);
    EXPECT_EQ(ChooseFormat("application/openmetrics-text;version=1.0.0;q=0.2,application/openmetrics-text;q=0.9,"
                           "text/plain;q=0.5"),
              kOld)
        << "the more precise value counts";
    EXPECT_EQ(ChooseFormat("application/openmetrics-text"), kOpen);
}

TEST(MetricsFormatTest, CaseBlanksAndQuotationMarksDoNotMatter) {
    EXPECT_EQ(ChooseFormat("  Application/OpenMetrics-Text ;\tVersion = \"1.0.0\" ; Q=1.0 "), kOpen);
    EXPECT_EQ(ChooseFormat("x/y;a=\"text/plain,;\",application/openmetrics-text"), kOpen);
}

TEST(MetricsFormatTest, NonsenseIsPrometheus) {
    for (char const* const accept :
         {",", ";", ";;;,,,", "q=1", "=", "/", "*", "\"", "application/openmetrics-text;q=", "\x01\xFF",
          "application/openmetrics-text;q=2", "application/openmetrics-text;q=-1", "application/openmetrics-text;q=nan",
          "application/openmetrics-text;q=1x", "\"application/openmetrics-text", "application/openmetrics-textual",
          "openmetrics-text"}) {
        EXPECT_EQ(ChooseFormat(accept), kOld) << accept;
    }
    EXPECT_EQ(ChooseFormat("nonsense;q=x,application/openmetrics-text"), kOpen);
}

TEST(MetricsFormatTest, TypeOfTheContents) {
    EXPECT_STREQ(ContentType(kOld), "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_STREQ(ContentType(kOpen), "application/openmetrics-text; version=1.0.0; charset=utf-8");
}

}  // namespace

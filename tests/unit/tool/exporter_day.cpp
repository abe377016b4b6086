// A day of the exporter's life on clocks that run faster: what it holds must not grow after the first hour. The memory
// is counted by the address sanitizer.
#include <gtest/gtest.h>

#include <iostream>

#include "resources.h"
#include "tests/unit/tool/SamplerBench.h"
#include "tool/serve/History.h"
#include "tool/serve/MetricsText.h"
#include "tool/serve/PageData.h"

using namespace gputune::tool;
using gputune::test::ResourcesNow;

namespace {

// Of the samples of a day, failures and sleep cost some; there are to be as many in spite of that.
constexpr int kHours = 28;
constexpr std::size_t kSamples = 24 * 3600;
constexpr int kHour = 3600;
// What lists and maps may take more at one moment than at another. The least that a mistake with every sample could add
// in an hour, a byte, is as much.
constexpr long long kSlack = 3600;

// What goes wrong in this second of the day.
void Disturb(SamplerBench& bench, int second) {
    int const minute = second / 60;
    bench.crashes = minute % 10 == 3 && second % 60 < 2;
    bench.hangs = minute % 60 == 17 && second % 60 < 8;
    bench.fails = minute % 60 == 18;
    bench.refuses = minute % 30 == 21;
    bench.power = minute % 60 < 30 || minute % 60 >= 35;
    bench.failedCalls.clear();
    if (minute % 7 == 5) {
        // Another code every time.
        bench.failedCalls = {{"ADL2_OverdriveN_Temperature_Get", "failed: " + std::to_string(second)},
                             {"Function" + std::to_string(second), "null ptr"}};
        bench.readings[GPUTUNE_HWM_GPU_TEMPERATURE].reset();
    } else {
        bench.readings[GPUTUNE_HWM_GPU_TEMPERATURE] = 60 + second % 20;
    }
    if (second % kHour == 1800) {
        bench.now += 600;  // the machine sleeps
    }
}

TEST(ExporterDay, HoldsNoMoreAfterTheFirstHour) {
    SamplerBench bench(1, GPUTUNE_VENDOR_INTEL);
    bench.counterGrowth = 0.5;
    bench.readings[GPUTUNE_HWM_FAN_SPEED_RPM] = 900;
    History history(1);
    long long afterFirst = 0;
    long long most = 0;
    std::size_t scraped = 0;
    for (int second = 0; second < kHours * kHour; ++second) {
        Disturb(bench, second);
        bench.Run(1);
        history.Add(bench.Served(), bench.Now().wall);
        if (second % 15 == 0) {
            scraped += EventJson(bench.Served(), bench.Now().wall).size();
            scraped +=
                MetricsText(bench.Served(), second % 30 == 0 ? MetricsFormat::Prometheus : MetricsFormat::OpenMetrics)
                    .size();
        }
        if (second % 600 == 0) {
            scraped += history.HistoryJson().size();
        }
        if (second % kHour == kHour - 1) {
            long long const bytes = ResourcesNow().bytes;
            afterFirst = second < kHour ? bytes : afterFirst;
            most = std::max(most, bytes - afterFirst);
            std::cout << "after hour " << second / kHour + 1 << ": " << bytes << " bytes, " << bench.samples
                      << " samples, " << bench.workers << " workers\n";
        }
    }
    std::cout << scraped << " bytes served\n";
    EXPECT_LE(most, kSlack);
    // It was a day with everything in it.
    EXPECT_GE(bench.samples, kSamples);
    EXPECT_GT(bench.Current().workerRestarts, 24U * 20);
    EXPECT_TRUE(bench.Current().sample);
    EXPECT_GT(bench.Current().readFailures.size(), 64U);
}

}  // namespace

/*
 * A host in C that is linked against the import library and calls every function before the start. Prints what is not
 * as promised; the exit code is the number of that.
 */
#include "gputune.h"

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void Expect(bool condition, char const* what) {
    if (!condition) {
        printf("not so: %s\n", what);
        ++failures;
    }
}

#define EXPECT(condition) Expect((condition), #condition)

#define EXPECT_ZERO(Record, call)                                \
    do {                                                         \
        Record const record = (call);                            \
        static Record const zero;                                \
        Expect(memcmp(&record, &zero, sizeof zero) == 0, #call); \
    } while (0)

static void ExpectNothingAvailable(void) {
    FanTablePoint const curve[5] = {{20, 30}, {30, 40}, {40, 50}, {50, 60}, {60, 70}};

    EXPECT(!IsInitOk());
    EXPECT(!SetActiveAdapterIndex(0));
    EXPECT(GetActiveAdapterIndex() == -1);
    EXPECT(GetFrameRate() == -1);
    EXPECT(!SetFanSpeed(50));
    EXPECT(!SetFanSpeedTable(curve, 5));
    EXPECT(!SetPowerLimit(75, 0));
    EXPECT(!SetPowerLimitDefault());
    EXPECT(!SetPerformanceUser(0, 0, 0, 0));
    EXPECT(!SetPerformanceOC());
    EXPECT(!SetPerformanceDefault());
    EXPECT(!SetPerformanceSilent());
    FetchHwmValues();
    EXPECT_ZERO(VgaInfo, GetVGAInfo());
    EXPECT_ZERO(HwmValue, GetHwmValue(GPUTUNE_HWM_GPU_TEMPERATURE));
    EXPECT_ZERO(FanSetting, GetFanSetting());
    EXPECT_ZERO(PowerLimitSetting, GetPowerLimitSetting());
    EXPECT_ZERO(ClockSetting, GetGpuClockSetting());
    EXPECT_ZERO(ClockSetting, GetMemClockSetting());
    EXPECT_ZERO(PredefinedPerformanceParameter, GetExternalPerformanceParameter(0x0B361002));
}

int main(void) {
    EXPECT(GetVendorInfo() == 0);
    ExpectNothingAvailable();
    printf("%d\n", failures);
    return failures;
}

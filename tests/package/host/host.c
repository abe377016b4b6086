/*
 * c_host [gputune_sim.dll board.json]
 *
 * A graphics-card utility in C: says what board there is and what the board says. With the two arguments on a simulated
 * board, without them on the machine's own.
 */
#include <gputune.h>

#include <stdio.h>
#include <windows.h>

static int StartBoard(char const* library, char const* board) {
    typedef int (*StartFunction)(char const*, char*, int);
    char error[512] = "no such library or function";
    HMODULE const module = LoadLibraryA(library);
    StartFunction const start = module ? (StartFunction)(void*)GetProcAddress(module, "GputuneSim_Start") : 0;
    if (!start || !start(board, error, sizeof error)) {
        printf("cannot start %s: %s\n", board, error);
        return 0;
    }
    return 1;
}

static void PrintReading(int key) {
    HwmValue const reading = GetHwmValue(key);
    if (reading.Valid) {
        printf("%s: %.2f\n", reading.Name, reading.Value);
    } else {
        printf("reading %d: not available\n", key);
    }
}

static void PrintBoard(void) {
    VgaInfo const info = GetVGAInfo();
    PowerLimitSetting const power = GetPowerLimitSetting();
    ClockSetting const clock = GetGpuClockSetting();
    FanSetting const fan = GetFanSetting();
    printf("%s, subsystem 0x%08X, bus %d\n", info.AdapterName, (unsigned)info.SubsystemId, (int)info.BusNumber);
    printf("power %d to %d %%\n", (int)power.Min, (int)power.Max);
    printf("clock %d to %d MHz\n", (int)clock.MinClock, (int)clock.MaxClock);
    printf("fan valid %d, points %d\n", fan.Valid, (int)fan.PointCount);
    FetchHwmValues();
    PrintReading(GPUTUNE_HWM_GPU_TEMPERATURE);
    PrintReading(GPUTUNE_HWM_GPU_HOTSPOT_TEMPERATURE);
    PrintReading(GPUTUNE_HWM_KEY_COUNT);
    printf("set fan: %d\n", SetFanSpeed(55));
}

int main(int argc, char** argv) {
    uint64_t vendor;
    bool initialised;
    if (argc == 3 && !StartBoard(argv[1], argv[2])) {
        return 1;
    }
    initialised = InitVGAHelper(GPUTUNE_LOG_NONE);
    vendor = GetVendorInfo();
    printf("initialised %d, usable %d, vendor %u, interface %u\n", initialised, IsInitOk(), (unsigned)vendor,
           (unsigned)(vendor >> 32));
    if (IsInitOk()) {
        PrintBoard();
    }
    return 0;
}

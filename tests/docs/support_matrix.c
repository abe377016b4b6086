/* support_matrix <gputune.dll> [<gputune_sim.dll> <board file> [<result> <entry point>...]]
 *
 * A host that calls every export on a simulated board, and says what it answered and which of the vendor's functions
 * that took: a line for each, "operation <tab> answer <tab> functions", and one for each reading that was stored. With
 * a result, the named functions answer nothing but that once the board has been started. Without a board nothing is
 * started: every export but InitVGAHelper is called. */
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

#include "gputune.h"
#include "gputune_sim.h"
#include "gputune_sim_host.h"

/* By way of memory: ISO C does not convert between pointers to functions and to data. */
#define FIND(function, module, name)                          \
    do {                                                      \
        FARPROC const found = GetProcAddress((module), name); \
        if (found == NULL) {                                  \
            printf("no function %s\n", name);                 \
            exit(1);                                          \
        }                                                     \
        memcpy(&(function), &found, sizeof found);            \
    } while (0)

static HMODULE library;
static int (*callCount)(void);
static int (*getCall)(int, GputuneSimCall*);
static void (*clearCalls)(void);

/* ---- Answers
 * --------------------------------------------------------------------------------------------------------- */

static char const* YesOrNo(bool answer) {
    return answer ? "true" : "false";
}

/* A record's storage before the call; no field of any has this value. */
enum { UNTOUCHED = 0x5A };

static unsigned char storage[4096];

/* In its binary form: a function that returns a record takes the address of its storage first. */
static void const* Record(char const* name, int argument) {
    void* (*get)(void*, int);
    FIND(get, library, name);
    memset(storage, UNTOUCHED, sizeof storage);
    return get(storage, argument);
}

/* Of the record in the storage, whose Valid is at this offset. */
static char const* Described(size_t size, size_t valid) {
    bool allZero = true;
    for (size_t i = 0; i < size; ++i) {
        allZero = allZero && storage[i] == 0;
    }
    return allZero ? "all zero" : storage[valid] != 0 ? "valid" : "not valid";
}

static char const* Number(long long number) {
    static char text[32];
    snprintf(text, sizeof text, "%lld", number);
    return text;
}

/* ---- What it took
 * ---------------------------------------------------------------------------------------------------- */

static void Say(char const* operation, char const* answer) {
    static GputuneSimCall calls[256];
    printf("%s\t%s\t", operation, answer);
    if (callCount == NULL) {
        printf("\n");
        return;
    }
    int const count = callCount() < 256 ? callCount() : 256;
    for (int i = 0, said = 0; i < count; ++i) {
        bool repeated = false;
        if (!getCall(i, &calls[i])) {
            continue;
        }
        for (int j = 0; j < i; ++j) {
            repeated = repeated || strcmp(calls[j].EntryPoint, calls[i].EntryPoint) == 0;
        }
        if (!repeated) {
            printf("%s%s", said++ > 0 ? " " : "", calls[i].EntryPoint);
        }
    }
    printf("\n");
    clearCalls();
}

static HMODULE StandIn(void) {
    static char const* const names[] = {"atiadlxx.dll", "ControlLib32.dll", "nvapi.dll"};
    for (size_t i = 0; i < sizeof names / sizeof *names; ++i) {
        HMODULE const module = GetModuleHandleA(names[i]);
        if (module != NULL) {
            return module;
        }
    }
    printf("no vendor library\n");
    exit(1);
}

/* ---- The operations
 * -------------------------------------------------------------------------------------------------- */

typedef bool (*Setter)(int, int, int, int);

/* One of those that take numbers and answer true or false. */
static Setter FindSetter(char const* name) {
    Setter setter;
    FIND(setter, library, name);
    return setter;
}

/* More arguments than a function takes do no harm: the caller removes them. */
static void Set(char const* name, int first, int second, int third, int fourth) {
    Say(name, YesOrNo(FindSetter(name)(first, second, third, fourth)));
}

static void SetEverything(bool isIntel) {
    static FanTablePoint const curve[] = {{30, 40}, {40, 50}, {50, 60}, {60, 70},
                                          {70, 80}, {80, 85}, {90, 90}, {95, 95}};
    bool (*setFanSpeedTable)(FanTablePoint const*, int);
    FIND(setFanSpeedTable, library, "SetFanSpeedTable");

    Set("SetFanSpeed", 50, 0, 0, 0);
    Say("SetFanSpeed, negative", YesOrNo(FindSetter("SetFanSpeed")(-1, 0, 0, 0)));
    Say("SetFanSpeedTable", YesOrNo(setFanSpeedTable(curve, isIntel ? 8 : 5)));
    Set("SetPowerLimit", 80, 10, 0, 0);
    Set("SetPowerLimitDefault", 0, 0, 0, 0);
    if (isIntel) {
        Set("SetPerformanceUser", 50, 0, 20, 0);
    } else {
        Set("SetPerformanceUser", 1400, 0, 900, 0);
    }
    Set("SetPerformanceOC", 0, 0, 0, 0);
    Set("SetPerformanceSilent", 0, 0, 0, 0);
    Set("SetPerformanceDefault", 0, 0, 0, 0);
}

static void ReadEverything(void) {
    int (*getFrameRate)(void);
    FIND(getFrameRate, library, "GetFrameRate");

    Record("GetVGAInfo", 0);
    /* The only record without Valid: a name makes it valid. */
    Say("GetVGAInfo", Described(sizeof(VgaInfo), offsetof(VgaInfo, AdapterName)));
    Record("GetFanSetting", 0);
    Say("GetFanSetting", Described(sizeof(FanSetting), offsetof(FanSetting, Valid)));
    Record("GetPowerLimitSetting", 0);
    Say("GetPowerLimitSetting", Described(sizeof(PowerLimitSetting), offsetof(PowerLimitSetting, Valid)));
    Record("GetGpuClockSetting", 0);
    Say("GetGpuClockSetting", Described(sizeof(ClockSetting), offsetof(ClockSetting, Valid)));
    Record("GetMemClockSetting", 0);
    Say("GetMemClockSetting", Described(sizeof(ClockSetting), offsetof(ClockSetting, Valid)));
    Record("GetExternalPerformanceParameter", -1);
    Say("GetExternalPerformanceParameter",
        Described(sizeof(PredefinedPerformanceParameter), offsetof(PredefinedPerformanceParameter, Valid)));
    Say("GetFrameRate", getFrameRate() >= 0 ? "a rate" : "-1");
}

static void FetchEverything(void) {
    void (*fetch)(void);
    int stored = 0;
    FIND(fetch, library, "FetchHwmValues");
    fetch();
    Say("FetchHwmValues", "");
    for (int key = 0; key < GPUTUNE_HWM_KEY_COUNT; ++key) {
        HwmValue value;
        Record("GetHwmValue", key);
        memcpy(&value, storage, sizeof value);
        if (value.Valid) {
            printf("reading\t%d\t%s\n", key, value.Name);
            ++stored;
        }
    }
    Say("GetHwmValue", stored > 0 ? "valid" : Described(sizeof(HwmValue), offsetof(HwmValue, Valid)));
}

/* Boards are given with two adapters. What selecting one asks of the driver is told; back to the first is not. */
static void SelectAnother(void) {
    int (*getActive)(void);
    Setter const select = FindSetter("SetActiveAdapterIndex");
    FIND(getActive, library, "GetActiveAdapterIndex");
    int const first = getActive();
    Say("SetActiveAdapterIndex", YesOrNo(select(first + 1, 0, 0, 0)));
    Say("GetActiveAdapterIndex", Number(getActive()));
    if (select(first, 0, 0, 0) && callCount != NULL) {
        clearCalls();
    }
}

/* ----------------------------------------------------------------------------------------------------------------------
 */

static void Start(char const* simulationFile, char const* board) {
    int (*start)(const char*, char*, int);
    bool (*initVgaHelper)(int);
    char error[512];
    HMODULE const simulation = LoadLibraryA(simulationFile);
    FIND(start, simulation, "GputuneSim_Start");
    if (!start(board, error, sizeof error)) {
        printf("%s\n", error);
        exit(1);
    }
    FIND(initVgaHelper, library, "InitVGAHelper");
    bool const hasBackend = initVgaHelper(GPUTUNE_LOG_NONE);
    HMODULE const standIn = StandIn();
    FIND(callCount, standIn, "GputuneSim_CallCount");
    FIND(getCall, standIn, "GputuneSim_GetCall");
    FIND(clearCalls, standIn, "GputuneSim_ClearCalls");
    Say("InitVGAHelper", YesOrNo(hasBackend));
}

static void Refuse(int result, char** entryPoints, int count) {
    void (*setResult)(const char*, int);
    FIND(setResult, StandIn(), "GputuneSim_SetResult");
    for (int i = 0; i < count; ++i) {
        setResult(entryPoints[i], result);
    }
}

int main(int argc, char** argv) {
    uint64_t (*getVendorInfo)(void);
    if (argc < 2) {
        return 2;
    }
    library = LoadLibraryA(argv[1]);
    if (argc > 3) {
        Start(argv[2], argv[3]);
    }
    if (argc > 4) {
        Refuse((int)strtoul(argv[4], NULL, 0), argv + 5, argc - 5);
    }
    FIND(getVendorInfo, library, "GetVendorInfo");
    uint64_t const vendor = getVendorInfo();
    char both[32];
    snprintf(both, sizeof both, "%u, %u", (unsigned)vendor, (unsigned)(vendor >> 32));
    Say("GetVendorInfo", both);
    Set("IsInitOk", 0, 0, 0, 0);
    SelectAnother();
    FetchEverything();
    SetEverything((vendor >> 32) == GPUTUNE_API_IGCL);
    ReadEverything();
    return 0;
}

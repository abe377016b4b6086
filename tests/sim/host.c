/* A host in C: sim/include compiles in C, and a board is started, read and stopped. Arguments: gputune_sim.dll,
 * gputune.dll, a board file. */
#include <stdio.h>
#include <windows.h>

#include "gputune.h"
#include "gputune_sim.h"
#include "gputune_sim_host.h"

/* By way of memory: ISO C does not convert between pointers to functions and to data. */
#define FIND(function, module, name)                          \
    do {                                                      \
        FARPROC const found = GetProcAddress((module), name); \
        memcpy(&(function), &found, sizeof(found));           \
    } while (0)

int main(int argc, char** argv) {
    if (argc != 4) {
        return 2;
    }
    int (*start)(const char*, char*, int);
    void (*stop)(void);
    HMODULE const simulation = LoadLibraryA(argv[1]);
    FIND(start, simulation, "GputuneSim_Start");
    FIND(stop, simulation, "GputuneSim_Stop");
    char error[512];
    if (!start(argv[3], error, sizeof(error))) {
        printf("%s\n", error);
        return 1;
    }

    bool (*initVgaHelper)(int);
    void (*fetchHwmValues)(void);
    HwmValue (*getHwmValue)(int);
    HMODULE const library = LoadLibraryA(argv[2]);
    FIND(initVgaHelper, library, "InitVGAHelper");
    FIND(fetchHwmValues, library, "FetchHwmValues");
    FIND(getHwmValue, library, "GetHwmValue");
    if (!initVgaHelper(GPUTUNE_LOG_NONE)) {
        return 1;
    }
    fetchHwmValues();
    HwmValue const limit = getHwmValue(GPUTUNE_HWM_TEMPERATURE_LIMIT);
    printf("%s: %.0f C\n", limit.Name, limit.Value);
    stop();
    return 0;
}

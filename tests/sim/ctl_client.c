/*
 * A client of the control library functions that gputune.dll exports, on a simulated Intel board. It knows their
 * published records and nothing of ours. Arguments: how the stand-in is found, and where it and the board file are.
 *
 *   ctl_client by-name <ControlLib32.dll> <board file>   as on a machine: gputune.dll asks for it by its name
 *   ctl_client by-path <any.dll> <board file>            by ctlSetRuntimePath
 *
 * Prints what does not hold, and at the end that all holds.
 */
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

typedef void* Handle;

/* Records, every word by its number. */
enum {
    INIT_WORDS = 36 / 4,
    DEVICE_WORDS = 312 / 4,
    OVERCLOCK_WORDS = 296 / 4,
    TELEMETRY_WORDS = 808 / 4,
    FAN_WORDS = 24 / 4,
    TABLE_WORDS = 908 / 4,
    CONFIG_WORDS = 936 / 4,
    PATH_WORDS = 32 / 4
};

__declspec(dllimport) int32_t __cdecl ctlInit(uint32_t*, Handle*);
__declspec(dllimport) int32_t __cdecl ctlClose(Handle);
__declspec(dllimport) int32_t __cdecl ctlSetRuntimePath(uint32_t*);
__declspec(dllimport) int32_t __cdecl ctlEnumerateDevices(Handle, uint32_t*, Handle*);
__declspec(dllimport) int32_t __cdecl ctlGetDeviceProperties(Handle, uint32_t*);
__declspec(dllimport) int32_t __cdecl ctlOverclockGetProperties(Handle, uint32_t*);
__declspec(dllimport) int32_t __cdecl ctlOverclockWaiverSet(Handle);
__declspec(dllimport) int32_t __cdecl ctlOverclockPowerLimitSet(Handle, double);
__declspec(dllimport) int32_t __cdecl ctlOverclockPowerLimitGet(Handle, double*);
__declspec(dllimport) int32_t __cdecl ctlOverclockGpuFrequencyOffsetSet(Handle, double);
__declspec(dllimport) int32_t __cdecl ctlOverclockGpuFrequencyOffsetGet(Handle, double*);
__declspec(dllimport) int32_t __cdecl ctlPowerTelemetryGet(Handle, uint32_t*);
__declspec(dllimport) int32_t __cdecl ctlEnumFans(Handle, uint32_t*, Handle*);
__declspec(dllimport) int32_t __cdecl ctlFanGetProperties(Handle, uint32_t*);
__declspec(dllimport) int32_t __cdecl ctlFanGetConfig(Handle, uint32_t*);
__declspec(dllimport) int32_t __cdecl ctlFanSetSpeedTableMode(Handle, uint32_t const*);
__declspec(dllimport) int32_t __cdecl ctlTemperatureGetState(Handle, double*);

static int failures = 0;

#define EXPECT(condition)                                           \
    do {                                                            \
        if (!(condition)) {                                         \
            printf("line %d: expected %s\n", __LINE__, #condition); \
            ++failures;                                             \
        }                                                           \
    } while (0)

static double Number(uint32_t const* record, int offset) {
    double number;
    memcpy(&number, (char const*)record + offset, sizeof(number));
    return number;
}

/* The simulated machine: the only part that is not a client's. */
static int LoadBoard(char const* library, char const* board) {
    int (*load)(const char*, char*, int);
    char error[512] = "no GputuneSim_LoadBoard";
    HMODULE const module = LoadLibraryExA(library, NULL, LOAD_WITH_ALTERED_SEARCH_PATH);
    FARPROC const found = module != NULL ? GetProcAddress(module, "GputuneSim_LoadBoard") : NULL;
    memcpy(&load, &found, sizeof(found));
    if (load == NULL || !load(board, error, sizeof(error))) {
        printf("%s: %s\n", library, error);
        return 0;
    }
    return 1;
}

static Handle Open(void) {
    Handle api = NULL;
    uint32_t args[INIT_WORDS] = {32, 0, 0x00010001, 1};
    EXPECT(ctlInit(args, &api) == 0x40000010); /* not the record's size */
    args[0] = sizeof(args);
    EXPECT(ctlInit(args, NULL) == 0x4000000E);
    EXPECT(ctlInit(args, &api) == 0);
    EXPECT(api != NULL);
    EXPECT(args[4] == 0x00010001); /* the version the library has */
    return api;
}

static Handle OnlyDevice(Handle api) {
    uint32_t count = 0;
    Handle device = NULL;
    uint32_t luid[2] = {0, 0};
    uint32_t properties[DEVICE_WORDS] = {sizeof(properties), 0, (uint32_t)(uintptr_t)luid, sizeof(luid)};
    EXPECT(ctlEnumerateDevices(api, &count, NULL) == 0 && count == 1);
    EXPECT(ctlEnumerateDevices(api, &count, &device) == 0 && device != NULL);
    EXPECT(ctlGetDeviceProperties(NULL, properties) == 0x4000000D);
    EXPECT(ctlGetDeviceProperties(device, properties) == 0);
    EXPECT(properties[4] == 1);       /* graphics */
    EXPECT(properties[14] == 0x8086); /* vendor */
    EXPECT(strcmp((char const*)properties + 80, "Intel(R) Arc(TM) A770 Graphics") == 0);
    EXPECT(luid[0] == 51966);
    return device;
}

static void Overclock(Handle device) {
    uint32_t properties[OVERCLOCK_WORDS] = {sizeof(properties)};
    double value = 0;
    EXPECT(ctlOverclockGetProperties(device, properties) == 0);
    EXPECT(Number(properties, 200 + 32) == 190); /* the default power limit, in W */
    EXPECT(ctlOverclockPowerLimitSet(device, 228001.0) == 0x44000004);
    EXPECT(ctlOverclockPowerLimitSet(device, 200500.0) == 0);
    EXPECT(ctlOverclockPowerLimitGet(device, &value) == 0 && value == 200500.0);
    EXPECT(ctlOverclockGpuFrequencyOffsetSet(device, 100.5) == 0x44000008);
    EXPECT(ctlOverclockWaiverSet(device) == 0);
    EXPECT(ctlOverclockGpuFrequencyOffsetSet(device, 100.5) == 0);
    EXPECT(ctlOverclockGpuFrequencyOffsetGet(device, &value) == 0 && value == 100.5);
}

static void Fans(Handle device) {
    uint32_t count = 0;
    Handle fans[2] = {NULL, NULL};
    uint32_t properties[FAN_WORDS] = {sizeof(properties)};
    uint32_t table[TABLE_WORDS] = {sizeof(table), 0, 2};
    uint32_t config[CONFIG_WORDS] = {sizeof(config)};
    int point;
    EXPECT(ctlEnumFans(device, &count, NULL) == 0 && count == 2);
    EXPECT(ctlEnumFans(device, &count, fans) == 0 && fans[0] != NULL && fans[1] != fans[0]);
    EXPECT(ctlFanGetProperties(fans[0], properties) == 0);
    EXPECT(properties[2] == 2 && properties[5] == 8); /* tables, of eight points */
    for (point = 0; point < 2; ++point) {
        uint32_t const words[7] = {28, 0, point ? 80 : 40, 16, 0, point ? 100 : 30, 1};
        memcpy(table + 3 + 7 * point, words, sizeof(words));
    }
    EXPECT(ctlFanSetSpeedTableMode(fans[0], table) == 0);
    EXPECT(ctlFanGetConfig(fans[0], config) == 0);
    EXPECT(config[2] == 2 && config[9] == 2);                      /* a table, of two points */
    EXPECT(config[10 + 7 + 2] == 80 && config[10 + 7 + 5] == 100); /* degrees Celsius and percent */
    table[2] = 9;
    EXPECT(ctlFanSetSpeedTableMode(fans[0], table) == 0x4000000B);
}

static void Telemetry(Handle device) {
    uint32_t telemetry[TELEMETRY_WORDS] = {sizeof(telemetry)};
    EXPECT(ctlPowerTelemetryGet(device, telemetry) == 0);
    EXPECT((telemetry[104 / 4] & 0xFF) == 1);
    EXPECT(Number(telemetry, 104 + 16) > 20 && Number(telemetry, 104 + 16) < 100); /* degrees Celsius */
}

int main(int argc, char** argv) {
    wchar_t path[MAX_PATH];
    uint32_t request[PATH_WORDS] = {sizeof(request), 0, 0, 0, 0, 0, (uint32_t)(uintptr_t)path};
    uint32_t count = 0;
    double temperature = 0;
    Handle api;
    Handle device;
    if (argc != 4 || !LoadBoard(argv[2], argv[3])) {
        return 2;
    }
    EXPECT(ctlEnumFans(NULL, &count, NULL) == 0x40000001);
    if (strcmp(argv[1], "by-path") == 0) {
        uint32_t args[INIT_WORDS] = {sizeof(args), 0, 0x00010001, 1};
        EXPECT(ctlInit(args, &api) == 0x40000026); /* there is none of the usual name */
        MultiByteToWideChar(CP_UTF8, 0, argv[2], -1, path, MAX_PATH);
        EXPECT(ctlSetRuntimePath(request) == 0);
    }
    api = Open();
    device = OnlyDevice(api);
    Overclock(device);
    Fans(device);
    Telemetry(device);
    EXPECT(ctlTemperatureGetState(device, &temperature) == 0x4000000A); /* this driver does not have it */
    EXPECT(ctlClose(NULL) == 0x4000000D);
    EXPECT(ctlClose(api) == 0);
    EXPECT(ctlEnumFans(device, &count, NULL) == 0x40000001);
    if (failures == 0) {
        printf("all holds\n");
    }
    return failures == 0 ? 0 : 1;
}

/*
 * A library with the functions of gputune.h, compiled for this machine, that records its calls: LastCall returns the
 * name and the arguments of the last one. It answers with numbers that are easy to tell apart: in a record each field
 * is one more than the one before, and bytes without a meaning have arbitrary values. After Answer(0) it fails: setters
 * return false, records are not valid, numbers are -1.
 *
 * On this machine, too, the address of a record's storage is the first argument and comes back. Nothing here shows
 * whether a language's cdecl is that of 32-bit Windows.
 */
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "gputune.h"
#include "gputune_sim_host.h"

enum { DIRT = 0xAA };

static char lastCall[256] = "";
static bool answers = true;
static unsigned vendor = GPUTUNE_VENDOR_AMD;
static unsigned api = GPUTUNE_API_OVERDRIVEN;

char const* LastCall(void) {
    return lastCall;
}

void Answer(int whether) {
    answers = whether != 0;
}

void SetVendorInfo(int newVendor, int newApi) {
    vendor = (unsigned)newVendor;
    api = (unsigned)newApi;
}

static void Log(char const* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(lastCall, sizeof lastCall, format, arguments);
    va_end(arguments);
}

/* Of a bool only the lowest byte counts; the rest of the register is what it was. These functions return the whole
 * register, under the names of the header's. */
static unsigned Bool(bool value) {
    return 0xAAAAAA00U | (value ? 1U : 0U);
}

#define BOOL_FUNCTION(name, parameters)            \
    unsigned Wide##name parameters __asm__(#name); \
    unsigned Wide##name parameters

BOOL_FUNCTION(InitVGAHelper, (int logMode)) {
    Log("InitVGAHelper %d", logMode);
    return Bool(answers);
}

BOOL_FUNCTION(IsInitOk, (void)) {
    return Bool(answers);
}

BOOL_FUNCTION(SetActiveAdapterIndex, (int index)) {
    Log("SetActiveAdapterIndex %d", index);
    return Bool(answers);
}

BOOL_FUNCTION(SetFanSpeed, (int percent)) {
    Log("SetFanSpeed %d", percent);
    return Bool(answers);
}

BOOL_FUNCTION(SetFanSpeedTable, (FanTablePoint const* table, int count)) {
    Log("SetFanSpeedTable %d", count);
    for (int i = 0; i < count; ++i) {
        size_t const length = strlen(lastCall);
        snprintf(lastCall + length, sizeof lastCall - length, " %d:%d", table[i].FanTemperature, table[i].FanSpeed);
    }
    return Bool(answers);
}

BOOL_FUNCTION(SetPowerLimit, (int temperatureLimit, int powerLimit)) {
    Log("SetPowerLimit %d %d", temperatureLimit, powerLimit);
    return Bool(answers);
}

BOOL_FUNCTION(SetPowerLimitDefault, (void)) {
    Log("SetPowerLimitDefault");
    return Bool(answers);
}

BOOL_FUNCTION(SetPerformanceUser, (int gpuClock, int gpuVoltage, int memClock, int memVoltage)) {
    Log("SetPerformanceUser %d %d %d %d", gpuClock, gpuVoltage, memClock, memVoltage);
    return Bool(answers);
}

BOOL_FUNCTION(SetPerformanceOC, (void)) {
    Log("SetPerformanceOC");
    return Bool(answers);
}

BOOL_FUNCTION(SetPerformanceDefault, (void)) {
    Log("SetPerformanceDefault");
    return Bool(answers);
}

BOOL_FUNCTION(SetPerformanceSilent, (void)) {
    Log("SetPerformanceSilent");
    return Bool(answers);
}

uint64_t GetVendorInfo(void) {
    return (uint64_t)api << 32U | vendor;
}

int GetActiveAdapterIndex(void) {
    return answers ? 3 : -1;
}

int GetFrameRate(void) {
    return answers ? 144 : -1;
}

void FetchHwmValues(void) {
    Log("FetchHwmValues");
}

static void Text(char (*field)[256], char const* text) {
    memset(*field, DIRT, sizeof *field);
    strcpy(*field, text);
}

VgaInfo GetVGAInfo(void) {
    VgaInfo info = {0};
    if (answers) {
        Text(&info.AdapterName, "Echo");
        info.SubsystemId = 0x70011002;
        info.BusNumber = 7;
    }
    return info;
}

/* The key before the last has never had a reading. */
HwmValue GetHwmValue(int key) {
    HwmValue value;
    memset(&value, 0, sizeof value);
    value.Value = -1;
    if (answers && key != GPUTUNE_HWM_TEMPERATURE_LIMIT) {
        value.Value = key + 0.5;
        value.Valid = true;
        snprintf(value.Name, sizeof value.Name, "Key %d", key);
    }
    return value;
}

/* Fields count on from `first`; the byte `Valid` and its padding come before them. */
static void Count(void* record, size_t size, int first) {
    memset(record, DIRT, size);
    for (size_t i = 1; i < size / sizeof(int); ++i) {
        ((int*)record)[i] = first + (int)i - 1;
    }
    *(unsigned char*)record = answers ? 1 : 0;
}

/* In its binary form, to leave the rest of the storage as it is: two points, of the second only the current speed. */
FanSetting* WideGetFanSetting(FanSetting* storage) __asm__("GetFanSetting");
FanSetting* WideGetFanSetting(FanSetting* storage) {
    storage->Valid = answers;
    storage->PointCount = 2;
    storage->Points[0] = (FanPoint){20, 21, 22, 23, 24, 25, 26, 27};
    storage->Points[1].CurrentSpeed = 30;
    return storage;
}

PowerLimitSetting GetPowerLimitSetting(void) {
    PowerLimitSetting setting;
    Count(&setting, sizeof setting, 40);
    setting.Current = -1;
    return setting;
}

ClockSetting GetGpuClockSetting(void) {
    ClockSetting setting;
    Count(&setting, sizeof setting, 50);
    setting.CurrentVoltage = -1;
    return setting;
}

ClockSetting GetMemClockSetting(void) {
    ClockSetting setting;
    Count(&setting, sizeof setting, 60);
    return setting;
}

PredefinedPerformanceParameter GetExternalPerformanceParameter(uint32_t hwid) {
    PredefinedPerformanceParameter record;
    Log("GetExternalPerformanceParameter %08X", hwid);
    Count(&record, sizeof record, 70);
    float* const fields = &record.GpuOC;
    for (int i = 0; i < 8; ++i) {
        fields[i] = 70.25F + (float)i;
    }
    return record;
}

int GputuneSim_Start(const char* boardFile, char* error, int errorSize) {
    if (strcmp(boardFile, "board.json") == 0) {
        return 1;
    }
    snprintf(error, (size_t)errorSize, "%s: cannot be opened", boardFile);
    return 0;
}

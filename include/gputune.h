/*
 * gputune.h - read and tune the installed graphics board, whoever made its GPU.
 *
 * The one public header of gputune.dll, a 32-bit Windows library. Compiles on its own as C99 and as C++17 or later.
 *
 * Conventions
 *
 *  1. Start: call InitVGAHelper once. It returns true as soon as a backend for the detected vendor exists; whether that
 *     backend could open its adapter is what IsInitOk tells. A later InitVGAHelper call detects again and replaces the
 *     backend. There is no shutdown call: the library cleans up when it is unloaded.
 *  2. Before the first successful InitVGAHelper every other function but GetVendorInfo answers false, -1 or an all-zero
 *     record.
 *  3. Calling convention: cdecl, undecorated names. Records are returned by value, which on 32-bit x86 means: the
 *     caller passes the address of its storage as a hidden first argument and pops it, the function returns that
 *     address. GetVendorInfo returns its 64 bits in edx:eax.
 *  4. Threads: one call at a time. The library takes no locks; a host with several threads serialises its calls.
 *  5. Errors: setters return false, getters of numbers -1, records carry `Valid` == 0. The reason is in the diagnostic
 *     log (see GputuneLogMode). No C++ exception leaves the library, except that InitVGAHelper lets the runtime's
 *     allocation exception through when memory runs out.
 *  6. Ownership: every record is a plain copy that belongs to the caller. Arrays passed in are only read, and only
 *     during the call.
 *  7. Strings are NUL-terminated, in the encoding in which the vendor's library delivers them (the system's ANSI code
 *     page).
 *  8. "Not available" is -1 in int fields and -1.0 in HwmValue::Value.
 *  9. After a one-byte `Valid` the next three bytes are padding without meaning: read the byte only.
 * 10. NVIDIA boards can be monitored only: FetchHwmValues reads GPUTUNE_HWM_GPU_TEMPERATURE. Every setter is false, and
 *     every record about the board all zero. docs/support-matrix.md has a table of all operations and boards.
 * 11. The library also exports the 95 functions of the Intel Graphics Control Library under their published names and
 *     signatures (cdecl, not declared here). ctlInit loads that library, the others pass their calls on to it; without
 *     it they return 0x40000001 (not initialised). The Intel backend is a client of the same functions: a host's own
 *     ctlClose closes the library for the backend, too. ctlSetRuntimePath before ctlInit keeps the address of the
 *     caller's record, not a copy: the record lives until a ctlInit has succeeded or ctlClose was called. A ctlInit or
 *     an InitVGAHelper that failed has not released it.
 */
#ifndef GPUTUNE_H
#define GPUTUNE_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

/* The widths of which there is a gputune.dll. */
#if defined(_WIN64)
#error "gputune.dll is a library for 32-bit programs: build this program for x86"
#endif

#if defined(_WIN32)
#define GPUTUNE_CALL __cdecl
#else
#define GPUTUNE_CALL
#endif

/* Defined while the library itself is built; hosts leave it undefined. */
#if defined(_WIN32) && !defined(GPUTUNE_BUILDING_LIBRARY)
#define GPUTUNE_API __declspec(dllimport)
#else
#define GPUTUNE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Enumerations ------------------------------------------------------------------------------------------------ */

/* Destination of the diagnostic log, the argument of InitVGAHelper. Any other value means no logging. */
enum GputuneLogMode {
    GPUTUNE_LOG_NONE = 0,
    GPUTUNE_LOG_STDOUT = 1, /* the process's standard output */
    GPUTUNE_LOG_FILE = 2,   /* "debug.log" in the current working directory, truncated at the first InitVGAHelper */
    GPUTUNE_LOG_BOTH = 3
};

/* Low 32 bits of GetVendorInfo. */
enum GputuneVendor {
    GPUTUNE_VENDOR_UNKNOWN = 0,
    GPUTUNE_VENDOR_AMD = 1,
    GPUTUNE_VENDOR_INTEL = 2,
    GPUTUNE_VENDOR_NVIDIA = 3
};

/* High 32 bits of GetVendorInfo: the vendor interface that the backend drives. */
enum GputuneApiType {
    GPUTUNE_API_NONE = 0,
    GPUTUNE_API_OVERDRIVE8 = 2, /* AMD Display Library, Overdrive8 generation */
    GPUTUNE_API_OVERDRIVEN = 3, /* AMD Display Library, OverdriveN generation */
    GPUTUNE_API_IGCL = 4,       /* Intel Graphics Control Library */
    GPUTUNE_API_NVAPI = 5       /* NVIDIA NVAPI */
};

/* Keys of GetHwmValue, the display name each entry carries once a reading is stored, and the unit of its value. */
enum GputuneHwmKey {
    GPUTUNE_HWM_GPU_CORE_CLOCK = 0,          /* "GPU Core Clock", MHz */
    GPUTUNE_HWM_GPU_MEMORY_CLOCK = 1,        /* "GPU Memory Clock", MHz */
    GPUTUNE_HWM_GPU_TEMPERATURE = 2,         /* "GPU Temperature", degrees Celsius */
    GPUTUNE_HWM_GPU_HOTSPOT_TEMPERATURE = 3, /* "GPU HotSpot Temperature", degrees Celsius */
    GPUTUNE_HWM_GPU_MEMORY_TEMPERATURE = 4,  /* "GPU Memory Temperature", degrees Celsius */
    GPUTUNE_HWM_FAN_SPEED_PERCENT = 5,       /* "Fan Speed(%)", percent */
    GPUTUNE_HWM_FAN_SPEED_RPM = 6,           /* "Fan Speed(RPM)", revolutions per minute */
    GPUTUNE_HWM_GPU_LOAD = 7,                /* "GPU Load", percent (Intel: a raw activity counter) */
    GPUTUNE_HWM_MEMORY_CONTROLLER_LOAD = 8,  /* "Memory Controller Load", percent */
    GPUTUNE_HWM_GPU_POWER = 9,               /* "GPU only Power Draw", watts */
    GPUTUNE_HWM_VDDC_POWER = 10,             /* "VDDC Power Draw", watts */
    GPUTUNE_HWM_VDDCI_POWER = 11,            /* "VDDCI Power Draw", watts */
    GPUTUNE_HWM_VRM_EFFICIENCY = 12,         /* "VRM Efficiency", percent */
    GPUTUNE_HWM_MEMORY_USAGE = 13,           /* "Memory Usage", megabytes */
    GPUTUNE_HWM_MEMORY_USAGE_DEDICATED = 14, /* "Memory Usage (Dedicated)", megabytes */
    GPUTUNE_HWM_MEMORY_USAGE_DYNAMIC = 15,   /* "Memory Usage (Dynamic)", megabytes */
    GPUTUNE_HWM_VDDC = 16,                   /* "VDDC", millivolts */
    GPUTUNE_HWM_CPU_USAGE = 17,              /* "CPU Usage", percent */
    GPUTUNE_HWM_CPU_FREQUENCY = 18,          /* "CPU Frequency", MHz */
    GPUTUNE_HWM_TEMPERATURE_LIMIT = 19,      /* "Temperature Limit", degrees Celsius */
    GPUTUNE_HWM_TDP_LIMIT = 20,              /* "TDP Limit", percent */
    GPUTUNE_HWM_KEY_COUNT = 21
};

/* ---- Records ----------------------------------------------------------------------------------------------------- */

/* One monitored value. 272 bytes; align the record to 8 bytes where the compiler's ABI does not. */
typedef struct HwmValue {
    double Value;        /* in the key's unit; -1.0 until a reading has been stored */
    char Name[256];      /* the key's display name; empty until a reading has been stored */
    bool Valid;          /* true once a reading has been stored; a later failing fetch leaves the last reading */
    uint8_t Reserved[7]; /* zero */
} HwmValue;

/* Identity of the active adapter. 264 bytes. All zero on NVIDIA and Intel boards. */
typedef struct VgaInfo {
    uint32_t SubsystemId;  /* PCI subsystem field: device identifier in the high 16 bits, vendor identifier in the low
                              16; 0 when unknown, malformed, or above 0x7FFFFFFF */
    char AdapterName[256]; /* product name */
    int32_t BusNumber;     /* PCI bus number */
} VgaInfo;

/* One point of the fan's range and state. Percent and degrees Celsius; -1 for a current value that cannot be read. */
typedef struct FanPoint {
    int32_t DefaultSpeed;
    int32_t DefaultTemperature;
    int32_t MaxSpeed;
    int32_t MinSpeed;
    int32_t MaxTemperature;
    int32_t MinTemperature;
    int32_t CurrentSpeed;
    int32_t CurrentTemperature;
} FanPoint;

/* Fan capabilities and settings. 1,608 bytes. */
typedef struct FanSetting {
    bool Valid;
    int32_t PointCount;  /* meaningful entries of Points: 1 for a single setting, 5 for a five-point curve */
    FanPoint Points[50]; /* what the backend does not write is indeterminate: it is what the storage held */
} FanSetting;

/* Power limit range. 20 bytes. Percent of the board's default power, relative to it (0 = default). */
typedef struct PowerLimitSetting {
    bool Valid;
    int32_t Default;
    int32_t Max;
    int32_t Min;
    int32_t Current; /* -1 where the backend cannot read the value in effect */
} PowerLimitSetting;

/* Clock and voltage range and state. 36 bytes. Clocks in MHz, voltages in millivolts; -1 where not available. */
typedef struct ClockSetting {
    bool Valid;
    int32_t DefaultClock;
    int32_t DefaultVoltage;
    int32_t MaxClock;
    int32_t MinClock;
    int32_t MaxVoltage;
    int32_t MinVoltage;
    int32_t CurrentClock;
    int32_t CurrentVoltage;
} ClockSetting;

/* One point of a fan curve, the element of the table that SetFanSpeedTable takes. 8 bytes. */
typedef struct FanTablePoint {
    int32_t FanSpeed;       /* percent */
    int32_t FanTemperature; /* degrees Celsius */
} FanTablePoint;

/*
 * The predefined overclock and silent profile of one board, from the profile file. 44 bytes. The clock values are
 * factors of the default clock (1.05 = 5 % above it), the "given" values absolute clocks in MHz that replace the
 * factor where they are not 0, the power values percent as SetPowerLimit takes them.
 */
typedef struct PredefinedPerformanceParameter {
    bool Valid;
    float GpuOC;
    float GpuOCGivenValue;
    float MemOC;
    float MemOCGivenValue;
    float PowerOC;
    float GpuSilent;
    float MemSilent;
    float PowerSilent;
    int32_t Watt;        /* board power, watts */
    int32_t NewestVBIOS; /* newest video BIOS marker of the board */
} PredefinedPerformanceParameter;

/* ---- Lifecycle --------------------------------------------------------------------------------------------------- */

/*
 * Detect the GPU vendor, bind to its control library and make the backend for it the current one.
 *
 * logMode  a GputuneLogMode. The first call in the process fixes the log's destination; later values change nothing.
 *
 * True when a backend of the right kind exists (then ask IsInitOk). False when no supported GPU was found, or the AMD
 * library could not be opened, or it offers no known Overdrive generation; an earlier backend then stays in use.
 * Call it once. On Intel boards a second call leaves the new backend without the vendor's library, because the old
 * backend, deleted last, closes it: readings then stay as they are, and settings fail.
 * Thread: COM is used on the calling thread, multithreaded; a thread that runs a single-threaded apartment works too.
 */
GPUTUNE_API bool GPUTUNE_CALL InitVGAHelper(int logMode);

/* True when the current backend found and opened a usable adapter. */
GPUTUNE_API bool GPUTUNE_CALL IsInitOk(void);

/*
 * What the last InitVGAHelper found, also after a failed one: GputuneVendor in the low 32 bits, GputuneApiType in the
 * high 32 bits. 0 before any call.
 */
GPUTUNE_API uint64_t GPUTUNE_CALL GetVendorInfo(void);

/* ---- Adapters ---------------------------------------------------------------------------------------------------- */

/*
 * Choose which of the vendor's adapters later calls act on.
 *
 * index  the vendor library's own adapter index: AMD, the index of an active adapter (not a position in a list); Intel,
 *        the position of a graphics device; NVIDIA boards cannot be selected.
 *
 * False when there is no such adapter; the selection is then unchanged. Ranges and defaults that the backend read at
 * its start stay those of the adapter that was active then.
 */
GPUTUNE_API bool GPUTUNE_CALL SetActiveAdapterIndex(int index);

/* The adapter in use, in the same numbering; -1 when AMD reports no active adapter. */
GPUTUNE_API int GPUTUNE_CALL GetActiveAdapterIndex(void);

/* Identity of the board. With several AMD adapters it is always that of the first one the driver lists. */
GPUTUNE_API VgaInfo GPUTUNE_CALL GetVGAInfo(void);

/* ---- Monitoring -------------------------------------------------------------------------------------------------- */

/*
 * Read all sensors once; GetHwmValue then returns the readings. A sensor that cannot be read keeps its last value.
 * (The function leaves a register value that hosts must not interpret, hence no result here.)
 */
GPUTUNE_API void GPUTUNE_CALL FetchHwmValues(void);

/*
 * The reading that the last FetchHwmValues stored for a GputuneHwmKey, without touching the board. An entry that was
 * never stored has Value -1.0 and Valid false; a key outside 0 to 20 gives an all-zero record.
 */
GPUTUNE_API HwmValue GPUTUNE_CALL GetHwmValue(int key);

/*
 * Frames per second that the driver measures on the board's display, truncated. -1 when not available: every backend
 * but Overdrive8, and Overdrive8 when the driver does not answer. Nothing here starts the driver's frame metrics: while
 * they do not run, its answer means nothing.
 */
GPUTUNE_API int GPUTUNE_CALL GetFrameRate(void);

/* ---- Fan --------------------------------------------------------------------------------------------------------- */

/*
 * Set a fixed fan speed.
 *
 * percent  0 to 100, which is not checked here; a negative value returns the fan to the driver's automatic control.
 *          Overdrive8 boards refuse what lies outside the range of their first curve point (GetFanSetting). OverdriveN
 *          boards whose fans are set the newer way get 1 percent for 0, so that the fan never stops.
 */
GPUTUNE_API bool GPUTUNE_CALL SetFanSpeed(int percent);

/*
 * Set a fan curve.
 *
 * table, count  the points in ascending order, and their number. For Overdrive8 boards the array MUST hold five points:
 *               five are read, whatever count says (count below 1 or a null table is refused). Intel fans take as many
 *               as the fan's own number of points. OverdriveN and NVIDIA boards have no curve: always false.
 */
GPUTUNE_API bool GPUTUNE_CALL SetFanSpeedTable(FanTablePoint const* table, int count);

/*
 * Fan range and state. OverdriveN boards write only `Valid` and `PointCount`; the points are indeterminate. All zero on
 * NVIDIA and Intel.
 */
GPUTUNE_API FanSetting GPUTUNE_CALL GetFanSetting(void);

/* ---- Power ------------------------------------------------------------------------------------------------------- */

/*
 * Set the temperature and power limits.
 *
 * temperatureLimit  degrees Celsius; OverdriveN only, ignored elsewhere.
 * powerLimit        percent relative to the default power (0 = default, 10 = 110 %). OverdriveN refuses a value outside
 *                   the board's ranges; elsewhere the vendor's library judges it.
 */
GPUTUNE_API bool GPUTUNE_CALL SetPowerLimit(int temperatureLimit, int powerLimit);

/* Restore the default power limit. */
GPUTUNE_API bool GPUTUNE_CALL SetPowerLimitDefault(void);

/* Power limit range, and the value in effect where it can be read. All zero on NVIDIA and Intel. */
GPUTUNE_API PowerLimitSetting GPUTUNE_CALL GetPowerLimitSetting(void);

/* ---- Clocks and profiles ----------------------------------------------------------------------------------------- */

/*
 * Set clocks (MHz) and voltages (mV). OverdriveN: 0 keeps the current value. Overdrive8: the voltages are ignored, and
 * setting the clocks that are already in effect answers false. Intel: both clocks are offsets in MHz, voltages ignored.
 */
GPUTUNE_API bool GPUTUNE_CALL SetPerformanceUser(int gpuClock, int gpuVoltage, int memClock, int memVoltage);

/*
 * Apply the predefined overclock profile of the board (see GetExternalPerformanceParameter): the power limit first, on
 * OverdriveN along with the default temperature limit, then the clocks. AMD only.
 *
 * False when there is no profile or the clocks could not be set, on Overdrive8 also when they are in effect already; a
 * power limit that was set before that stays in force.
 */
GPUTUNE_API bool GPUTUNE_CALL SetPerformanceOC(void);

/*
 * Restore the driver's defaults. AMD only: on OverdriveN clocks, voltages and power limit; on Overdrive8 every setting
 * there is, the fan curve included.
 */
GPUTUNE_API bool GPUTUNE_CALL SetPerformanceDefault(void);

/* Apply the predefined silent profile of the board, in the same way. AMD only. */
GPUTUNE_API bool GPUTUNE_CALL SetPerformanceSilent(void);

/* Range and state of the GPU clock and voltage. `Valid` false where the board has no such setting. */
GPUTUNE_API ClockSetting GPUTUNE_CALL GetGpuClockSetting(void);

/* Range and state of the memory clock; AMD boards have no memory voltage (-1). */
GPUTUNE_API ClockSetting GPUTUNE_CALL GetMemClockSetting(void);

/*
 * The predefined profile for a board, read afresh from "Config\ConfigModel.xml" below the directory of the host's
 * executable: the entry with this identifier, else the default entry.
 *
 * hwid  the board's identifier, as VgaInfo::SubsystemId.
 *
 * `Valid` is false when the file cannot be read, holds neither entry, or holds a malformed identifier.
 */
GPUTUNE_API PredefinedPerformanceParameter GPUTUNE_CALL GetExternalPerformanceParameter(uint32_t hwid);

#ifdef __cplusplus
}
#endif

#endif /* GPUTUNE_H */

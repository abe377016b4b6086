// Read and tune the installed graphics board, whoever made its GPU, through gputune.dll: for Node.js and Electron, by
// way of koffi. The library is a 32-bit one, so the host is a 32-bit (ia32) Node.js or Electron for Windows.
//
// load() gives the functions of gputune.h under their own names; what they take and answer stands there. Records become
// plain objects with the header's fields. The functions block; the library takes one call at a time, so koffi's
// asynchronous calls may not overlap.
'use strict';

const path = require('node:path');
const koffi = require('koffi');

const LogMode = Object.freeze({ NONE: 0, STDOUT: 1, FILE: 2, BOTH: 3 });

const Vendor = Object.freeze({ UNKNOWN: 0, AMD: 1, INTEL: 2, NVIDIA: 3 });

const ApiType = Object.freeze({ NONE: 0, OVERDRIVE8: 2, OVERDRIVEN: 3, IGCL: 4, NVAPI: 5 });

const HwmKey = Object.freeze({
    GPU_CORE_CLOCK: 0, // MHz
    GPU_MEMORY_CLOCK: 1, // MHz
    GPU_TEMPERATURE: 2, // degrees Celsius
    GPU_HOTSPOT_TEMPERATURE: 3, // degrees Celsius
    GPU_MEMORY_TEMPERATURE: 4, // degrees Celsius
    FAN_SPEED_PERCENT: 5, // percent
    FAN_SPEED_RPM: 6, // revolutions per minute
    GPU_LOAD: 7, // percent (Intel: a raw activity counter)
    MEMORY_CONTROLLER_LOAD: 8, // percent
    GPU_POWER: 9, // watts
    VDDC_POWER: 10, // watts
    VDDCI_POWER: 11, // watts
    VRM_EFFICIENCY: 12, // percent
    MEMORY_USAGE: 13, // megabytes
    MEMORY_USAGE_DEDICATED: 14, // megabytes
    MEMORY_USAGE_DYNAMIC: 15, // megabytes
    VDDC: 16, // millivolts
    CPU_USAGE: 17, // percent
    CPU_FREQUENCY: 18, // MHz
    TEMPERATURE_LIMIT: 19, // degrees Celsius
    TDP_LIMIT: 20, // percent
});

// The members one after the other, all of one type.
function members(type, ...names) {
    return Object.fromEntries(names.map((name) => [name, type]));
}

const text = koffi.array('char', 256, 'Typed');

const records = {
    HwmValue: koffi.struct('HwmValue', {
        Value: 'double',
        Name: text,
        Valid: 'bool',
        Reserved: koffi.array('uint8_t', 7),
    }),
    VgaInfo: koffi.struct('VgaInfo', { SubsystemId: 'uint32_t', AdapterName: text, BusNumber: 'int32_t' }),
    FanPoint: koffi.struct('FanPoint', members('int32_t',
        'DefaultSpeed', 'DefaultTemperature', 'MaxSpeed', 'MinSpeed', 'MaxTemperature', 'MinTemperature',
        'CurrentSpeed', 'CurrentTemperature')),
    FanSetting: koffi.struct('FanSetting', {
        Valid: 'bool',
        PointCount: 'int32_t',
        Points: koffi.array('FanPoint', 50),
    }),
    PowerLimitSetting: koffi.struct('PowerLimitSetting', {
        Valid: 'bool',
        ...members('int32_t', 'Default', 'Max', 'Min', 'Current'),
    }),
    ClockSetting: koffi.struct('ClockSetting', {
        Valid: 'bool',
        ...members('int32_t', 'DefaultClock', 'DefaultVoltage', 'MaxClock', 'MinClock', 'MaxVoltage', 'MinVoltage',
            'CurrentClock', 'CurrentVoltage'),
    }),
    FanTablePoint: koffi.struct('FanTablePoint', members('int32_t', 'FanSpeed', 'FanTemperature')),
    PredefinedPerformanceParameter: koffi.struct('PredefinedPerformanceParameter', {
        Valid: 'bool',
        ...members('float', 'GpuOC', 'GpuOCGivenValue', 'MemOC', 'MemOCGivenValue', 'PowerOC', 'GpuSilent', 'MemSilent',
            'PowerSilent'),
        ...members('int32_t', 'Watt', 'NewestVBIOS'),
    }),
};

const prototypes = [
    'bool __cdecl InitVGAHelper(int logMode)',
    'bool __cdecl IsInitOk()',
    'uint64_t __cdecl GetVendorInfo()',
    'bool __cdecl SetActiveAdapterIndex(int index)',
    'int __cdecl GetActiveAdapterIndex()',
    'VgaInfo __cdecl GetVGAInfo()',
    'void __cdecl FetchHwmValues()',
    'HwmValue __cdecl GetHwmValue(int key)',
    'int __cdecl GetFrameRate()',
    'bool __cdecl SetFanSpeed(int percent)',
    'bool __cdecl SetFanSpeedTable(FanTablePoint* table, int count)',
    // A record comes back by value, which in binary form is: its storage is the first argument. In this form we choose
    // what the storage held before, and so can tell which points the board wrote.
    'void* __cdecl GetFanSetting(_Inout_ FanSetting* storage)',
    'bool __cdecl SetPowerLimit(int temperatureLimit, int powerLimit)',
    'bool __cdecl SetPowerLimitDefault()',
    'PowerLimitSetting __cdecl GetPowerLimitSetting()',
    'bool __cdecl SetPerformanceUser(int gpuClock, int gpuVoltage, int memClock, int memVoltage)',
    'bool __cdecl SetPerformanceOC()',
    'bool __cdecl SetPerformanceDefault()',
    'bool __cdecl SetPerformanceSilent()',
    'ClockSetting __cdecl GetGpuClockSetting()',
    'ClockSetting __cdecl GetMemClockSetting()',
    'PredefinedPerformanceParameter __cdecl GetExternalPerformanceParameter(uint32_t hwid)',
];

function checkProcess() {
    if (process.platform !== 'win32' || process.arch !== 'ia32') {
        throw new Error('gputune.dll is a library for 32-bit Windows programs, and this is a process for ' +
            `${process.platform} ${process.arch}; please use the ia32 build of Node.js or Electron for Windows`);
    }
}

// The library's texts are in the system's ANSI code page.
function textDecoder() {
    const multiByteToWideChar = koffi.load('kernel32.dll').func(
        'int __stdcall MultiByteToWideChar(uint codePage, uint32_t flags, const void* text, int size, ' +
        '_Out_ uint8_t* wide, int capacity)');
    const ansi = 0;
    return (characters) => {
        const bytes = Buffer.from(characters.buffer, characters.byteOffset, characters.byteLength);
        const end = bytes.indexOf(0);
        const used = end < 0 ? bytes : bytes.subarray(0, end);
        const wide = Buffer.alloc(2 * used.length);
        const length = multiByteToWideChar(ansi, 0, used, used.length, wide, used.length);
        return wide.toString('utf16le', 0, 2 * length);
    };
}

const fanPoints = 50;
const overdrive8Points = 5;
// What a backend left as it was: no setting has this value.
const untouched = -(2 ** 31);

// The library's functions, with these differences: GetVendorInfo gives { vendor, api }; GetFanSetting's Points are
// those that count, and a field that the board does not tell is null; SetFanSpeedTable takes an array of
// { FanTemperature, FanSpeed }. Without a file, gputune.dll is taken from beside this one.
function load(file = path.join(__dirname, 'gputune.dll')) {
    checkProcess();
    const library = koffi.load(path.resolve(file));
    const raw = Object.fromEntries(prototypes.map((prototype) => {
        const native = library.func(prototype);
        return [native.info.name, native];
    }));
    const decode = textDecoder();

    function GetVendorInfo() {
        const info = BigInt(raw.GetVendorInfo());
        return { vendor: Number(info & 0xffffffffn), api: Number(info >> 32n) };
    }

    return {
        ...raw,
        GetVendorInfo,
        GetVGAInfo() {
            const info = raw.GetVGAInfo();
            return { ...info, AdapterName: decode(info.AdapterName) };
        },
        GetHwmValue(key) {
            const { Value, Name, Valid } = raw.GetHwmValue(key);
            return { Value, Name: decode(Name), Valid };
        },
        GetFanSetting() {
            const point = Object.fromEntries(Object.keys(records.FanPoint.members).map((name) => [name, untouched]));
            const storage = { Valid: false, PointCount: 0, Points: Array.from({ length: fanPoints }, () => point) };
            raw.GetFanSetting(storage);
            const told = (fields) => Object.fromEntries(
                Object.entries(fields).map(([name, value]) => [name, value === untouched ? null : value]));
            return { ...storage, Points: storage.Points.slice(0, Math.max(0, storage.PointCount)).map(told) };
        },
        SetFanSpeedTable(points) {
            // Five are read, whatever number is given.
            if (points.length === 0 ||
                (GetVendorInfo().api === ApiType.OVERDRIVE8 && points.length !== overdrive8Points)) {
                throw new RangeError(
                    `a fan curve of ${points.length} points; Overdrive8 boards take ${overdrive8Points}`);
            }
            return raw.SetFanSpeedTable(points, points.length);
        },
    };
}

module.exports = { load, LogMode, Vendor, ApiType, HwmKey, records, prototypes };

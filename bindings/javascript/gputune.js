// Read and tune the installed graphics board, whoever made its GPU, through gputune.dll: for Node.js and Electron, by
// way of koffi, of either width (ia32, x64). A 64-bit process loads x64/gputune.dll from beside this file, or gputune.dll,
// a 32-bit one gputune.dll.
//
//     const board = new Gputune();
//     board.start();
//     for (const { name, value, unit } of board.readSensors()) {
//         console.log(`${name}: ${value} ${unit}`);
//     }
//     board.setFanSpeed(60);
//
// Gputune answers null for what is not available, and throws a GputuneError for what is refused. load() gives the
// functions of gputune.h under their own names; what they take and answer stands there.
//
// Both throw a TypeError for an argument that is no number, and a RangeError for one that the library cannot take. The
// functions block; the library takes one call at a time, so koffi's asynchronous calls may not overlap.
'use strict';

const fs = require('node:fs');
const path = require('node:path');

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

// koffi, and in it the library's records. Only a process that can load the library has use for them, or can even load
// koffi, which comes as a library for one width, too.
let declared = null;
function declare() {
    if (declared) {
        return declared;
    }
    const koffi = require('koffi');
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
            ...members('float', 'GpuOC', 'GpuOCGivenValue', 'MemOC', 'MemOCGivenValue', 'PowerOC', 'GpuSilent',
                'MemSilent', 'PowerSilent'),
            ...members('int32_t', 'Watt', 'NewestVBIOS'),
        }),
    };
    declared = { koffi, records };
    return declared;
}

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

// No board can be used, the board or its driver refused a setting, or the process is one that cannot load the library.
class GputuneError extends Error {
    constructor(message) {
        super(message);
        this.name = 'GputuneError';
    }
}

function checkProcess() {
    if (process.platform !== 'win32' || !['ia32', 'x64'].includes(process.arch)) {
        throw new GputuneError('gputune.dll is a library for 32-bit and 64-bit (x64) Windows programs, and this is a process ' +
            `for ${process.platform} ${process.arch}; please use the x64 or the ia32 build of Node.js or Electron for Windows`);
    }
}

// Where this file is; for one in the archive of an Electron program, from which Windows cannot load, beside the archive, where
// Electron has what is left out of it.
const directory = __dirname.replace(/\bapp\.asar(?=[\\/]|$)/, 'app.asar.unpacked');

// From a file, else from the first that is there of those that are meant for this process.
function loadLibrary(koffi, file) {
    const is64Bit = process.arch === 'x64';
    const width = is64Bit ? '64-bit' : '32-bit';
    const names = is64Bit ? [path.join('x64', 'gputune.dll'), 'gputune.dll'] : ['gputune.dll'];
    const files = file === undefined ? names.map((name) => path.join(directory, name)) : [path.resolve(file)];
    const found = files.find((name) => fs.existsSync(name));
    if (!found) {
        throw new GputuneError(`there is no ${width} gputune.dll for this ${width} process: ${files.join(' or ')}`);
    }
    try {
        return koffi.load(found);
    } catch (error) {
        throw new GputuneError(`${found} cannot be loaded by this ${width} process, which needs the ${width} gputune.dll: ` +
            error.message);
    }
}

// The value of a C integer argument: koffi would send another one for what does not fit.
function integer(value, what, min = -(2 ** 31), max = 2 ** 31 - 1) {
    if (typeof value !== 'number') {
        throw new TypeError(`${what} is a number, not ${typeof value === 'string' ? `"${value}"` : String(value)}`);
    }
    if (!Number.isInteger(value) || value < min || value > max) {
        throw new RangeError(`${what} is an integer from ${min} to ${max}, not ${value}`);
    }
    return value;
}

// What the arguments of a prototype have to be, one check each; null without any.
function checksOf(name, parameters) {
    const checks = parameters.split(', ').filter(Boolean).map((parameter) => {
        const [type, ...words] = parameter.split(' ');
        const what = `${name}: ${words.join(' ')}`;
        switch (type) {
        case 'int':
            // More than that is never meant; negative is the driver's automatic control.
            return (value) => integer(value, what, undefined, name === 'SetFanSpeed' ? 100 : undefined);
        case 'uint32_t':
            return (value) => integer(value, what, 0, 2 ** 32 - 1);
        default:
            return (value) => value;
        }
    });
    return checks.length > 0 ? checks : null;
}

function checked(prototype, native) {
    const [, name, parameters] = /(\w+)\((.*)\)$/.exec(prototype);
    const checks = checksOf(name, parameters);
    if (!checks) {
        return [name, native];
    }
    const judge = (values) => checks.map((check, i) => check(values[i]));
    const call = (...values) => native(...judge(values));
    call.async = (...values) => native.async(...judge(values.slice(0, checks.length)), values[checks.length]);
    return [name, call];
}

// The library's texts are in the system's ANSI code page.
function textDecoder(koffi) {
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
// { FanTemperature, FanSpeed }; SetFanSpeed takes no more than 100. Without a file, gputune.dll is taken from beside this one.
function load(file) {
    checkProcess();
    const { koffi, records } = declare();
    const library = loadLibrary(koffi, file);
    const raw = Object.fromEntries(prototypes.map((prototype) => checked(prototype, library.func(prototype))));
    const decode = textDecoder(koffi);

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
            if (!Array.isArray(points)) {
                throw new TypeError('SetFanSpeedTable: points is an array of { FanTemperature, FanSpeed }');
            }
            // Five are read, whatever number is given.
            if (points.length === 0 ||
                (GetVendorInfo().api === ApiType.OVERDRIVE8 && points.length !== overdrive8Points)) {
                throw new RangeError(
                    `a fan curve of ${points.length} points; Overdrive8 boards take ${overdrive8Points}`);
            }
            const table = points.map((point, i) => ({
                FanSpeed: integer(point?.FanSpeed, `SetFanSpeedTable: points[${i}].FanSpeed`),
                FanTemperature: integer(point?.FanTemperature, `SetFanSpeedTable: points[${i}].FanTemperature`),
            }));
            return raw.SetFanSpeedTable(table, table.length);
        },
    };
}

// By HwmKey.
const units = ['MHz', 'MHz', '°C', '°C', '°C', '%', 'rpm', '%', '%', 'W', 'W', 'W', '%', 'MB', 'MB', 'MB', 'mV', '%',
    'MHz', '°C', '%'];

// The name of an enumeration's value, for messages.
function nameOf(enumeration, value) {
    return Object.keys(enumeration).find((name) => enumeration[name] === value) ?? String(value);
}

function known(value) {
    return value === null || value === -1 ? null : value;
}

// The fields of a record of the header under names as they are usual here, without Valid.
function plain(record, convert = (value) => value) {
    return Object.fromEntries(Object.entries(record).filter(([name]) => name !== 'Valid')
        .map(([name, value]) => [name[0].toLowerCase() + name.slice(1), convert(value)]));
}

// The graphics board. All objects of this class are the same library, whose state is the process's. To be started once
// and before anything else. gputune.h says of each function what the vendors make of it.
class Gputune {
    #library;

    // The library from a file, else from beside this one. Throws a GputuneError in any but a 32-bit or 64-bit (x64) Windows
    // process, and when the file is not there or of another width.
    constructor(file) {
        this.#library = load(file);
    }

    // Detect the GPU's vendor and get ready to use the board. To be called once: on Intel boards a second start leaves
    // the board out of use. Throws a GputuneError when there is no board that can be used.
    start(log = LogMode.NONE) {
        const hasBackend = this.#library.InitVGAHelper(log);
        if (hasBackend && this.isReady) {
            return;
        }
        if (this.vendor === Vendor.UNKNOWN) {
            throw new GputuneError('no supported GPU was found');
        }
        const gpu = `there is an ${nameOf(Vendor, this.vendor)} GPU`;
        throw new GputuneError(hasBackend ? `${gpu}, but no adapter that can be used`
            : `${gpu}, but its vendor's library cannot be used (is the driver installed?)`);
    }

    // Whether a usable adapter was found and opened.
    get isReady() {
        return this.#library.IsInitOk();
    }

    // What the last start found, even if it failed: one of Vendor, and one of ApiType.
    get vendor() {
        return this.#library.GetVendorInfo().vendor;
    }
    get api() {
        return this.#library.GetVendorInfo().api;
    }

    // The adapter in use, as the vendor's library numbers it; null when there is none.
    get activeAdapter() {
        return known(this.#library.GetActiveAdapterIndex());
    }

    // Choose the adapter that later calls act on. Throws a GputuneError when there is none of this number.
    selectAdapter(index) {
        this.#set('SetActiveAdapterIndex', index);
    }

    // Which board it is: { name, subsystemId, busNumber }, the identifier null if unknown; null where the vendor's
    // backend does not tell.
    identity() {
        const { SubsystemId, AdapterName, BusNumber } = this.#library.GetVGAInfo();
        if (SubsystemId === 0 && AdapterName === '' && BusNumber === 0) {
            return null;
        }
        return { name: AdapterName, subsystemId: SubsystemId || null, busNumber: BusNumber };
    }

    // Read all sensors once; reading() then has what they said.
    fetch() {
        this.#library.FetchHwmValues();
    }

    // The last reading of a sensor, { key, name, value, unit }; null when it never had one. A sensor that cannot be read
    // keeps its last one.
    reading(key) {
        integer(key, 'reading: key', 0, units.length - 1);
        const { Value, Name, Valid } = this.#library.GetHwmValue(key);
        if (!Valid) {
            return null;
        }
        const isCounter = key === HwmKey.GPU_LOAD && this.vendor === Vendor.INTEL;
        return { key, name: Name, value: Value, unit: isCounter ? '' : units[key] };
    }

    // Read all sensors once: the readings of those that the board has.
    readSensors() {
        this.fetch();
        return Object.values(HwmKey).map((key) => this.reading(key)).filter((reading) => reading !== null);
    }

    // Frames per second on the board's display; null when not available.
    get frameRate() {
        return known(this.#library.GetFrameRate());
    }

    // Set a fixed fan speed, 0 to 100 percent. Throws a GputuneError when it is refused, as all that sets does.
    setFanSpeed(percent) {
        this.#set('SetFanSpeed', integer(percent, 'setFanSpeed: percent', 0, 100));
    }

    // Return the fan to the driver's control.
    setFanAutomatic() {
        this.#set('SetFanSpeed', -1);
    }

    // Set a fan curve: { temperature (°C), speed (percent) } in ascending order. Overdrive8 boards take five.
    setFanCurve(points) {
        if (!Array.isArray(points)) {
            throw new TypeError('setFanCurve: points is an array of { temperature, speed }');
        }
        this.#set('SetFanSpeedTable',
            points.map((point) => ({ FanSpeed: point?.speed, FanTemperature: point?.temperature })));
    }

    // Range and state of the fan: one point for a fixed speed, five for a curve; null when not available. A field that
    // the board does not tell is null.
    fan() {
        const { Valid, Points } = this.#library.GetFanSetting();
        return Valid ? Points.map((point) => plain(point, known)) : null;
    }

    // Set the power limit, relative to the default power (10 = 110 %). OverdriveN boards also take the temperature limit
    // (°C), which others ignore.
    setPowerLimit(percent, temperature) {
        this.#set('SetPowerLimit', temperature, percent);
    }

    // Restore the default power limit.
    restorePowerLimit() {
        this.#set('SetPowerLimitDefault');
    }

    // Range of the power limit, { default, max, min, current }; null when not available. current is null where it cannot
    // be read; the sensor TDP_LIMIT may have it.
    powerLimit() {
        const setting = this.#library.GetPowerLimitSetting();
        if (!setting.Valid) {
            return null;
        }
        // Where the value in effect is always read, -1 is a limit of -1 percent.
        const isRead = setting.Current !== -1 || this.api === ApiType.OVERDRIVE8;
        return { ...plain(setting), current: isRead ? setting.Current : null };
    }

    // Set clocks (MHz) and voltages (mV). OverdriveN: 0 keeps what is. Overdrive8: no voltages; clocks that are in effect
    // already are refused. Intel: offsets from the default clocks, no voltages.
    setClocks({ gpu, memory, gpuVoltage = 0, memoryVoltage = 0 }) {
        this.#set('SetPerformanceUser', gpu, gpuVoltage, memory, memoryVoltage);
    }

    // The predefined profiles of the board, and the driver's defaults (AMD).
    applyOverclock() {
        this.#set('SetPerformanceOC');
    }
    applySilent() {
        this.#set('SetPerformanceSilent');
    }
    restoreDefaults() {
        this.#set('SetPerformanceDefault');
    }

    // Range and state of a clock and its voltage; null when not available, as is any field.
    gpuClock() {
        return this.#clock(this.#library.GetGpuClockSetting());
    }
    memoryClock() {
        return this.#clock(this.#library.GetMemClockSetting());
    }

    // The predefined profile of a board, from "Config\ConfigModel.xml" beside the program; null without one.
    profile(subsystemId) {
        const record = this.#library.GetExternalPerformanceParameter(subsystemId);
        if (!record.Valid) {
            return null;
        }
        return {
            gpuOverclock: record.GpuOC,
            gpuOverclockGiven: record.GpuOCGivenValue,
            memoryOverclock: record.MemOC,
            memoryOverclockGiven: record.MemOCGivenValue,
            powerOverclock: record.PowerOC,
            gpuSilent: record.GpuSilent,
            memorySilent: record.MemSilent,
            powerSilent: record.PowerSilent,
            watt: record.Watt,
            newestVbios: record.NewestVBIOS,
        };
    }

    #clock(setting) {
        return setting.Valid ? plain(setting, known) : null;
    }

    #set(name, ...values) {
        if (!this.#library[name](...values)) {
            throw new GputuneError(this.isReady
                ? `${name} was refused by the board or its driver (the log says more, see LogMode)`
                : 'no board is in use; start() has to succeed first');
        }
    }
}

module.exports = {
    Gputune, GputuneError, load, LogMode, Vendor, ApiType, HwmKey, prototypes,
    get records() {
        return declare().records;
    },
};

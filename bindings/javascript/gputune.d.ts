// The types of gputune.js, which says of each function what it does.

/** Destination of the diagnostic log. The first start in the process fixes it. FILE is "debug.log" in the current directory. */
export const LogMode: Readonly<{ NONE: 0; STDOUT: 1; FILE: 2; BOTH: 3 }>;
export type LogMode = (typeof LogMode)[keyof typeof LogMode];

/** Who made the GPU. */
export const Vendor: Readonly<{ UNKNOWN: 0; AMD: 1; INTEL: 2; NVIDIA: 3 }>;
export type Vendor = (typeof Vendor)[keyof typeof Vendor];

/** The vendor interface that is driven. */
export const ApiType: Readonly<{ NONE: 0; OVERDRIVE8: 2; OVERDRIVEN: 3; IGCL: 4; NVAPI: 5 }>;
export type ApiType = (typeof ApiType)[keyof typeof ApiType];

/** The sensors. */
export const HwmKey: Readonly<{
    GPU_CORE_CLOCK: 0;
    GPU_MEMORY_CLOCK: 1;
    GPU_TEMPERATURE: 2;
    GPU_HOTSPOT_TEMPERATURE: 3;
    GPU_MEMORY_TEMPERATURE: 4;
    FAN_SPEED_PERCENT: 5;
    FAN_SPEED_RPM: 6;
    GPU_LOAD: 7;
    MEMORY_CONTROLLER_LOAD: 8;
    GPU_POWER: 9;
    VDDC_POWER: 10;
    VDDCI_POWER: 11;
    VRM_EFFICIENCY: 12;
    MEMORY_USAGE: 13;
    MEMORY_USAGE_DEDICATED: 14;
    MEMORY_USAGE_DYNAMIC: 15;
    VDDC: 16;
    CPU_USAGE: 17;
    CPU_FREQUENCY: 18;
    TEMPERATURE_LIMIT: 19;
    TDP_LIMIT: 20;
}>;
export type HwmKey = (typeof HwmKey)[keyof typeof HwmKey];

/** No board can be used, the board or its driver refused a setting, or the process cannot load the library. */
export class GputuneError extends Error {}

// ---- The graphics board ----------------------------------------------------------------------------------------------

export interface Identity {
    name: string;
    /** Device identifier in the high 16 bits, vendor identifier in the low 16. */
    subsystemId: number | null;
    busNumber: number;
}

export interface Reading {
    key: HwmKey;
    name: string;
    value: number;
    /** Empty for a raw counter. */
    unit: string;
}

/** Speeds in percent, temperatures in °C; null where the board tells none. */
export interface FanPoint {
    defaultSpeed: number | null;
    defaultTemperature: number | null;
    maxSpeed: number | null;
    minSpeed: number | null;
    maxTemperature: number | null;
    minTemperature: number | null;
    currentSpeed: number | null;
    currentTemperature: number | null;
}

export interface FanCurvePoint {
    /** °C */
    temperature: number;
    /** Percent. */
    speed: number;
}

/** Percent of the default power, relative to it (0 = default). */
export interface PowerLimit {
    default: number;
    max: number;
    min: number;
    /** null where it cannot be read; the sensor TDP_LIMIT may have it. */
    current: number | null;
}

/** MHz; 0 keeps what is on OverdriveN boards, and on Intel boards these are offsets. Voltages in mV (OverdriveN). */
export interface Clocks {
    gpu: number;
    memory: number;
    gpuVoltage?: number;
    memoryVoltage?: number;
}

/** Clocks in MHz, voltages in mV; null where not available. */
export interface ClockRange {
    defaultClock: number | null;
    defaultVoltage: number | null;
    maxClock: number | null;
    minClock: number | null;
    maxVoltage: number | null;
    minVoltage: number | null;
    currentClock: number | null;
    currentVoltage: number | null;
}

/** Clocks are factors of the default clock; the given ones MHz, which count instead where not 0. Power as PowerLimit. */
export interface Profile {
    gpuOverclock: number;
    gpuOverclockGiven: number;
    memoryOverclock: number;
    memoryOverclockGiven: number;
    powerOverclock: number;
    gpuSilent: number;
    memorySilent: number;
    powerSilent: number;
    watt: number;
    newestVbios: number;
}

/** The graphics board. Getters answer null for what is not available; what sets throws a GputuneError when refused. */
export class Gputune {
    constructor(file?: string);
    start(log?: LogMode): void;
    readonly isReady: boolean;
    readonly vendor: Vendor;
    readonly api: ApiType;
    readonly activeAdapter: number | null;
    selectAdapter(index: number): void;
    identity(): Identity | null;
    fetch(): void;
    reading(key: HwmKey): Reading | null;
    readSensors(): Reading[];
    readonly frameRate: number | null;
    setFanSpeed(percent: number): void;
    setFanAutomatic(): void;
    setFanCurve(points: readonly FanCurvePoint[]): void;
    fan(): FanPoint[] | null;
    setPowerLimit(percent: number, temperature: number): void;
    restorePowerLimit(): void;
    powerLimit(): PowerLimit | null;
    setClocks(clocks: Clocks): void;
    applyOverclock(): void;
    applySilent(): void;
    restoreDefaults(): void;
    gpuClock(): ClockRange | null;
    memoryClock(): ClockRange | null;
    profile(subsystemId: number): Profile | null;
}

// ---- The functions of gputune.h --------------------------------------------------------------------------------------

export interface HwmValue {
    Value: number;
    Name: string;
    Valid: boolean;
}

export interface VgaInfo {
    SubsystemId: number;
    AdapterName: string;
    BusNumber: number;
}

export type FanSettingPoint = { [Field in
    'DefaultSpeed' | 'DefaultTemperature' | 'MaxSpeed' | 'MinSpeed' | 'MaxTemperature' | 'MinTemperature' |
    'CurrentSpeed' | 'CurrentTemperature']: number | null };

export interface FanSetting {
    Valid: boolean;
    PointCount: number;
    Points: FanSettingPoint[];
}

export interface PowerLimitSetting {
    Valid: boolean;
    Default: number;
    Max: number;
    Min: number;
    Current: number;
}

export interface ClockSetting {
    Valid: boolean;
    DefaultClock: number;
    DefaultVoltage: number;
    MaxClock: number;
    MinClock: number;
    MaxVoltage: number;
    MinVoltage: number;
    CurrentClock: number;
    CurrentVoltage: number;
}

export interface FanTablePoint {
    FanSpeed: number;
    FanTemperature: number;
}

export interface PredefinedPerformanceParameter {
    Valid: boolean;
    GpuOC: number;
    GpuOCGivenValue: number;
    MemOC: number;
    MemOCGivenValue: number;
    PowerOC: number;
    GpuSilent: number;
    MemSilent: number;
    PowerSilent: number;
    Watt: number;
    NewestVBIOS: number;
}

export interface Library {
    InitVGAHelper(logMode: LogMode): boolean;
    IsInitOk(): boolean;
    GetVendorInfo(): { vendor: Vendor; api: ApiType };
    SetActiveAdapterIndex(index: number): boolean;
    GetActiveAdapterIndex(): number;
    GetVGAInfo(): VgaInfo;
    FetchHwmValues(): void;
    GetHwmValue(key: number): HwmValue;
    GetFrameRate(): number;
    SetFanSpeed(percent: number): boolean;
    SetFanSpeedTable(points: readonly FanTablePoint[]): boolean;
    GetFanSetting(): FanSetting;
    SetPowerLimit(temperatureLimit: number, powerLimit: number): boolean;
    SetPowerLimitDefault(): boolean;
    GetPowerLimitSetting(): PowerLimitSetting;
    SetPerformanceUser(gpuClock: number, gpuVoltage: number, memClock: number, memVoltage: number): boolean;
    SetPerformanceOC(): boolean;
    SetPerformanceDefault(): boolean;
    SetPerformanceSilent(): boolean;
    GetGpuClockSetting(): ClockSetting;
    GetMemClockSetting(): ClockSetting;
    GetExternalPerformanceParameter(hwid: number): PredefinedPerformanceParameter;
}

/** Without a file, gputune.dll is taken from beside gputune.js; in 64-bit processes x64/gputune.dll, if it is there. */
export function load(file?: string): Library;

// javascript_calls.js <bindings/javascript> <bin>: every function of gputune.js, called in the real library on
// simulated boards. In the folder bin are gputune.dll, sim and boards; the profile file is beside this Node.js.
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const koffi = require('koffi');

const [, , bindings, bin] = process.argv;
const gputune = require(bindings);
const { HwmKey } = gputune;

const simulation = koffi.load(path.resolve(bin, 'sim', 'gputune_sim.dll'));
const startText = simulation.func('int __cdecl GputuneSim_StartText(str board, _Out_ uint8_t* error, int errorSize)');
const stop = simulation.func('void __cdecl GputuneSim_Stop()');

// A board of the folder with constant readings.
function start(name, readings) {
    const board = JSON.parse(fs.readFileSync(path.join(bin, 'boards', name), 'utf8'));
    board.model = { fixed: true, readings };
    const error = Buffer.alloc(512);
    assert.equal(startText(JSON.stringify(board), error, error.length), 1, error.toString());
}

function unavailable(board) {
    assert.equal(board.IsInitOk(), false);
    assert.equal(board.GetActiveAdapterIndex(), -1);
    assert.equal(board.SetActiveAdapterIndex(0), false);
    assert.equal(board.SetFanSpeed(50), false);
    assert.deepEqual(board.GetHwmValue(HwmKey.GPU_LOAD), { Value: 0, Name: '', Valid: false });
    assert.deepEqual(board.GetVGAInfo(), { SubsystemId: 0, AdapterName: '', BusNumber: 0 });
    assert.equal(board.GetFanSetting().Valid, false);
}

function overdriven(board) {
    start('overdriven.json', { temperature: 65.5, fanRpm: 1200, engineClock: 1340 });
    assert.equal(board.InitVGAHelper(gputune.LogMode.NONE), true);
    assert.equal(board.IsInitOk(), true);
    assert.deepEqual(board.GetVendorInfo(), { vendor: gputune.Vendor.AMD, api: gputune.ApiType.OVERDRIVEN });
    assert.equal(board.GetActiveAdapterIndex(), 0);
    assert.equal(board.SetActiveAdapterIndex(0), true);
    assert.equal(board.SetActiveAdapterIndex(77), false);
    assert.deepEqual(board.GetVGAInfo(),
        { SubsystemId: 0x0b361002, AdapterName: 'Radeon RX 580 Series', BusNumber: 1 });

    assert.equal(board.GetHwmValue(HwmKey.GPU_TEMPERATURE).Valid, false);
    board.FetchHwmValues();
    assert.deepEqual(board.GetHwmValue(HwmKey.GPU_TEMPERATURE), { Value: 65.5, Name: 'GPU Temperature', Valid: true });
    assert.deepEqual(board.GetHwmValue(HwmKey.FAN_SPEED_RPM), { Value: 1200, Name: 'Fan Speed(RPM)', Valid: true });
    assert.equal(board.GetFrameRate(), -1);

    assert.equal(board.SetPowerLimit(80, 10), true);
    assert.equal(board.SetPowerLimit(80, 51), false);
    board.FetchHwmValues();
    assert.equal(board.GetHwmValue(HwmKey.TEMPERATURE_LIMIT).Value, 80);
    assert.equal(board.GetHwmValue(HwmKey.TDP_LIMIT).Value, 10);
    assert.equal(board.SetPowerLimitDefault(), true);
    assert.deepEqual(board.GetPowerLimitSetting(), { Valid: true, Default: 0, Max: 50, Min: -50, Current: -1 });

    const nothing = Object.fromEntries(Object.keys(gputune.records.FanPoint.members).map((name) => [name, null]));
    assert.deepEqual(board.GetFanSetting(), { Valid: true, PointCount: 1, Points: [nothing] });

    assert.equal(board.SetPerformanceUser(1400, 1100, 0, 0), true);
    assert.deepEqual(board.GetGpuClockSetting(), {
        Valid: true, DefaultClock: 1340, DefaultVoltage: 1150, MaxClock: 2000, MinClock: 300, MaxVoltage: 1200,
        MinVoltage: 750, CurrentClock: 1400, CurrentVoltage: 1100,
    });
    assert.equal(board.SetPerformanceOC(), true);
    assert.equal(board.GetGpuClockSetting().CurrentClock, 1366);
    assert.equal(board.SetPerformanceSilent(), true);
    assert.equal(board.SetPerformanceDefault(), true);
    assert.equal(board.GetGpuClockSetting().CurrentClock, 1340);
    assert.deepEqual(board.GetExternalPerformanceParameter(0x22ef1462), {
        Valid: true, GpuOC: Math.fround(1.03), GpuOCGivenValue: 1280, MemOC: Math.fround(1.05), MemOCGivenValue: 1840,
        PowerOC: 20, GpuSilent: Math.fround(0.88), MemSilent: 1, PowerSilent: -20, Watt: 150, NewestVBIOS: 3,
    });
    stop();
}

function overdrive8(board) {
    start('overdrive8.json', { temperature: 71 });
    assert.equal(board.InitVGAHelper(gputune.LogMode.NONE), true);
    assert.deepEqual(board.GetVendorInfo(), { vendor: gputune.Vendor.AMD, api: gputune.ApiType.OVERDRIVE8 });
    board.FetchHwmValues();
    assert.equal(board.GetHwmValue(HwmKey.GPU_TEMPERATURE).Value, 71);
    assert.equal(board.GetMemClockSetting().MaxClock, 950);
    assert.equal(board.GetFrameRate(), 118);

    const curve = [[40, 20], [55, 30], [65, 45], [75, 65], [85, 90]]
        .map(([FanTemperature, FanSpeed]) => ({ FanTemperature, FanSpeed }));
    assert.equal(board.SetFanSpeedTable(curve), true);
    const told = board.GetFanSetting();
    assert.deepEqual(told.Points.map(({ CurrentTemperature, CurrentSpeed }) =>
        ({ FanTemperature: CurrentTemperature, FanSpeed: CurrentSpeed })), curve);
    assert.equal(told.Points[4].MaxTemperature, 100);
    assert.throws(() => board.SetFanSpeedTable(curve.slice(1)), RangeError);
    assert.throws(() => board.SetFanSpeedTable([]), RangeError);
    assert.equal(board.SetFanSpeed(60), true);
    assert.deepEqual(board.GetFanSetting().Points.map((point) => point.CurrentSpeed), [60, 60, 60, 60, 60]);
    stop();
}

// Values that do not fit their argument never reach the board.
function wrongArguments(library) {
    start('overdrive8.json', { temperature: 71 });
    assert.equal(library.InitVGAHelper(gputune.LogMode.NONE), true);
    assert.equal(library.SetFanSpeed(40), true);
    for (const percent of ['abc', '50', null, undefined, true, 50n, {}, [50]]) {
        assert.throws(() => library.SetFanSpeed(percent), TypeError, String(percent));
    }
    for (const percent of [Infinity, -Infinity, NaN, -0.5, 50.5, 101, 4294967356, -4294967246]) {
        assert.throws(() => library.SetFanSpeed(percent), RangeError, String(percent));
    }
    assert.throws(() => library.SetFanSpeed.async('abc', () => {}), TypeError);
    assert.throws(() => library.SetFanSpeed(), TypeError);
    assert.throws(() => library.InitVGAHelper('FILE'), TypeError);
    assert.throws(() => library.SetActiveAdapterIndex(4294967296), RangeError);
    assert.throws(() => library.GetHwmValue(2.5), RangeError);
    assert.throws(() => library.SetPowerLimit(80, 4294967306), RangeError);
    assert.throws(() => library.SetPowerLimit('80', 10), TypeError);
    assert.throws(() => library.SetPerformanceUser(1400, 0, 0), TypeError);
    assert.throws(() => library.GetExternalPerformanceParameter(-1), RangeError);
    assert.throws(() => library.GetExternalPerformanceParameter(2 ** 32), RangeError);
    const points = Array.from({ length: 5 }, () => ({ FanTemperature: 50, FanSpeed: 50 }));
    assert.throws(() => library.SetFanSpeedTable('five!'), TypeError);
    assert.throws(() => library.SetFanSpeedTable([...points.slice(1), { FanTemperature: 90 }]), TypeError);
    assert.throws(() => library.SetFanSpeedTable([...points.slice(1), null]), TypeError);
    assert.throws(() => library.SetFanSpeedTable([...points.slice(1), { FanTemperature: 90, FanSpeed: 2 ** 32 + 60 }]),
        RangeError);
    assert.equal(library.SetFanSpeed(-1), true);
    stop();
}

// The class on the same library, before there is a board.
function refusing() {
    const board = new gputune.Gputune(path.join(bin, 'gputune.dll'));
    assert.throws(() => board.setFanSpeed(60), { name: 'GputuneError', message: /start\(\) has to succeed first/ });
    assert.throws(() => board.start(), { name: 'GputuneError', message: 'no supported GPU was found' });
}

// And with boards.
function idiomatic() {
    const board = new gputune.Gputune(path.join(bin, 'gputune.dll'));
    start('overdrive8.json', { temperature: 71, fanRpm: 1200 });
    board.start();
    assert.deepEqual([board.isReady, board.vendor, board.api, board.activeAdapter, board.frameRate],
        [true, gputune.Vendor.AMD, gputune.ApiType.OVERDRIVE8, 0, 118]);
    // That of the first AMD board of the process: the library keeps the list of adapters.
    assert.deepEqual(board.identity(), { name: 'Radeon RX 580 Series', subsystemId: 0x0b361002, busNumber: 1 });
    assert.deepEqual(board.readSensors().find(({ key }) => key === HwmKey.GPU_TEMPERATURE),
        { key: HwmKey.GPU_TEMPERATURE, name: 'GPU Temperature', value: 71, unit: '°C' });
    assert.equal(board.reading(HwmKey.VRM_EFFICIENCY), null);
    assert.throws(() => board.reading(21), RangeError);
    assert.throws(() => board.selectAdapter(7), gputune.GputuneError);

    board.setFanSpeed(60);
    assert.deepEqual(board.fan().map((point) => point.currentSpeed), [60, 60, 60, 60, 60]);
    board.setFanCurve([[40, 20], [55, 30], [65, 45], [75, 65], [85, 90]]
        .map(([temperature, speed]) => ({ temperature, speed })));
    assert.deepEqual(board.fan()[4], {
        defaultSpeed: 100, defaultTemperature: 95, maxSpeed: 100, minSpeed: 15, maxTemperature: 100, minTemperature: 25,
        currentSpeed: 90, currentTemperature: 85,
    });
    board.setFanAutomatic();
    assert.throws(() => board.setFanSpeed(5), gputune.GputuneError);
    assert.throws(() => board.setFanSpeed(-1), RangeError);
    assert.throws(() => board.setFanSpeed('60'), TypeError);
    assert.throws(() => board.setFanCurve([{ temperature: 40 }]), RangeError);
    assert.throws(() => board.setFanCurve(null), TypeError);

    board.setPowerLimit(-1, 0);
    assert.deepEqual(board.powerLimit(), { default: 0, max: 50, min: -50, current: -1 });
    board.restorePowerLimit();
    board.setClocks({ gpu: 2000, memory: 900 });
    assert.equal(board.gpuClock().currentClock, 2000);
    assert.deepEqual([board.memoryClock().currentClock, board.memoryClock().currentVoltage], [900, null]);
    assert.throws(() => board.setClocks({ gpu: 2000 }), TypeError);
    board.applySilent();
    board.restoreDefaults();
    assert.equal(board.gpuClock().currentClock, board.gpuClock().defaultClock);
    assert.throws(() => board.applyOverclock() || board.applyOverclock(), gputune.GputuneError);
    assert.equal(board.profile(0x22ef1462).watt, 150);
    stop();

    start('intel.json', {});
    board.start();
    assert.equal(board.identity(), null);
    assert.equal(board.powerLimit(), null);
    assert.equal(board.fan(), null);
    assert.equal(board.frameRate, null);
    assert.deepEqual(board.readSensors().filter(({ key }) => key === HwmKey.GPU_LOAD).map(({ unit }) => unit), ['']);
    stop();
}

const board = gputune.load(path.join(bin, 'gputune.dll'));
unavailable(board);
refusing();
overdriven(board);
overdrive8(board);
wrongArguments(board);
idiomatic();
// The exit code is not enough: under Wine a process that dies of a page fault may exit with 0.
console.log('all calls made');

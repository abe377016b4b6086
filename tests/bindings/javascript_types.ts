// A program in TypeScript that uses all that gputune.d.ts declares; it is compiled only. What is marked has to be refused.
import gputune = require('./gputune');
import { Gputune, GputuneError, HwmKey, LogMode } from './gputune';

const board = new Gputune();
board.start(LogMode.FILE);
const name: string | undefined = board.identity()?.name;
const temperature: number | undefined = board.reading(HwmKey.GPU_TEMPERATURE)?.value;
for (const { key, unit } of board.readSensors()) {
    console.log(key, unit, name, temperature);
}
board.fetch();
board.setFanSpeed(60);
board.setFanAutomatic();
board.setFanCurve([{ temperature: 40, speed: 20 }]);
board.setPowerLimit(10, 80);
board.restorePowerLimit();
board.setClocks({ gpu: 1400, memory: 0, gpuVoltage: 1100 });
board.applyOverclock();
board.applySilent();
board.restoreDefaults();
board.selectAdapter(0);
const numbers: (number | null | undefined)[] = [
    board.activeAdapter, board.frameRate, board.fan()?.[0].maxSpeed, board.powerLimit()?.current,
    board.gpuClock()?.maxClock, board.memoryClock()?.minClock, board.profile(0x22ef1462)?.watt,
];
const ready: boolean = board.isReady && board.vendor === gputune.Vendor.AMD && board.api === gputune.ApiType.OVERDRIVE8;
console.log(numbers, ready, new GputuneError('text').message);

// @ts-expect-error: a text
board.setFanSpeed('60');
// @ts-expect-error: no sensor
board.reading(21);
// @ts-expect-error: may be null
board.powerLimit().max.toFixed();
// @ts-expect-error: no memory clock
board.setClocks({ gpu: 1400 });
// @ts-expect-error: cannot be set
board.isReady = true;

const library = gputune.load('gputune.dll');
const set: boolean = library.SetFanSpeedTable([{ FanTemperature: 40, FanSpeed: 20 }]);
const point: number | null = library.GetFanSetting().Points[0].CurrentSpeed;
console.log(set, point, library.GetHwmValue(HwmKey.GPU_LOAD).Name);
// @ts-expect-error: no such function
library.GetNothing();

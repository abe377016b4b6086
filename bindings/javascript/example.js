// Shows the board and its sensors and, when a speed is given, sets the fan.
//
//     node example.js [--fan PERCENT] [--library gputune.dll] [--simulate gputune_sim.dll --board BOARD.json]
'use strict';

const path = require('node:path');
const { parseArgs } = require('node:util');
const koffi = require('koffi');
const gputune = require('./gputune');

const { values: options } = parseArgs({
    options: {
        fan: { type: 'string' },
        library: { type: 'string' },
        simulate: { type: 'string' },
        board: { type: 'string' },
    },
});

// Gives this process a simulated board, to be called before InitVGAHelper.
function simulate(library, boardFile) {
    const start = koffi.load(path.resolve(library)).func(
        'int __cdecl GputuneSim_Start(str boardFile, _Out_ uint8_t* error, int errorSize)');
    const error = Buffer.alloc(512);
    if (!start(boardFile, error, error.length)) {
        throw new Error(error.toString('utf8', 0, error.indexOf(0)));
    }
}

function main() {
    if (options.simulate) {
        simulate(options.simulate, options.board);
    }
    const board = gputune.load(options.library);
    if (!board.InitVGAHelper(gputune.LogMode.NONE) || !board.IsInitOk()) {
        throw new Error('no graphics board that can be used');
    }
    console.log(board.GetVGAInfo().AdapterName);

    board.FetchHwmValues();
    for (const key of Object.values(gputune.HwmKey)) {
        const reading = board.GetHwmValue(key);
        if (reading.Valid) {
            console.log(`  ${reading.Name.padEnd(25)} ${reading.Value.toFixed(2)}`);
        }
    }

    if (options.fan !== undefined) {
        if (!board.SetFanSpeed(Number(options.fan))) {
            throw new Error(`the board refuses a fan speed of ${options.fan} %`);
        }
        console.log(`Fan speed set to ${options.fan} %.`);
    }
}

try {
    main();
} catch (error) {
    console.error(`error: ${error.message}`);
    process.exitCode = 1;
}

// Shows the board and its sensors and, when a speed is given, sets the fan.
//
//     node example.js [--fan PERCENT] [--library gputune.dll] [--simulate gputune_sim.dll --board BOARD.json]
'use strict';

const path = require('node:path');
const { parseArgs } = require('node:util');
const gputune = require('./gputune');

const { values: options } = parseArgs({
    options: {
        fan: { type: 'string' },
        library: { type: 'string' },
        simulate: { type: 'string' },
        board: { type: 'string' },
    },
});

// Gives this process a simulated board, to be called before start().
function simulate(library, boardFile) {
    const koffi = require('koffi');
    const start = koffi.load(path.resolve(library)).func(
        'int __cdecl GputuneSim_Start(str boardFile, _Out_ uint8_t* error, int errorSize)');
    const error = Buffer.alloc(512);
    if (!start(boardFile, error, error.length)) {
        throw new Error(error.toString('utf8', 0, error.indexOf(0)));
    }
}

function main() {
    const board = new gputune.Gputune(options.library);
    if (options.simulate) {
        simulate(options.simulate, options.board);
    }
    board.start();
    console.log(board.identity()?.name ?? 'A graphics board');
    for (const { name, value, unit } of board.readSensors()) {
        console.log(`  ${name.padEnd(25)} ${value.toFixed(2).padStart(9)} ${unit}`);
    }

    if (options.fan !== undefined) {
        board.setFanSpeed(Number(options.fan));
        console.log(`Fan speed set to ${options.fan} %.`);
    }
}

try {
    main();
} catch (error) {
    console.error(`error: ${error.message}`);
    process.exitCode = 1;
}

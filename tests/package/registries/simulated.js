// simulated.js: loaded before a program, gives its process a simulated board. The arguments are gputune_sim.dll and a board file.
'use strict';

const path = require('node:path');
const { createRequire } = require('node:module');

const koffi = createRequire(path.join(process.cwd(), 'program.js'))('koffi');
const [, , library, boardFile] = process.argv;
const start = koffi.load(path.resolve(library)).func(
    'int __cdecl GputuneSim_Start(str boardFile, _Out_ uint8_t* error, int errorSize)');
const error = Buffer.alloc(512);
if (!start(boardFile, error, error.length)) {
    throw new Error(error.toString('utf8', 0, error.indexOf(0)));
}

// javascript_table.js <bindings/javascript>: what gputune.js declares, in the form of header_table.py.
'use strict';

const koffi = require('koffi');
const gputune = require(process.argv[2]);

const lines = [];

// koffi calls an int32_t an int32.
function fieldType(type) {
    if (type.ref) {
        return `${fieldType(type.ref)}[${type.length}]`;
    }
    return /^u?int\d+$/.test(type.name) ? `${type.name}_t` : type.name;
}

for (const [name, record] of Object.entries(gputune.records)) {
    lines.push(`record ${name} ${koffi.sizeof(record)}`);
    for (const member of Object.values(koffi.type(record).members)) {
        lines.push(`field ${name}.${member.name} ${member.offset} ${fieldType(member.type)}`);
    }
}
for (const type of ['LogMode', 'Vendor', 'ApiType', 'HwmKey']) {
    for (const [name, value] of Object.entries(gputune[type])) {
        lines.push(`enum ${type}.${name.replaceAll('_', '')} ${value}`);
    }
}
for (const prototype of gputune.prototypes) {
    let [, result, name, parameters] = /^(.*) __cdecl (\w+)\((.*)\)$/.exec(prototype);
    let types = parameters === '' ? [] : parameters.split(', ').map((parameter) => parameter.replace(/ \w+$/, ''));
    if (result === 'void*') {
        // The storage of a record.
        [, result] = /^_Inout_ (\w+)\*$/.exec(types[0]);
        types = types.slice(1);
    }
    lines.push(`function ${result} ${name}(${types.join(', ')})`);
}
process.stdout.write(`${lines.join('\n')}\n`);

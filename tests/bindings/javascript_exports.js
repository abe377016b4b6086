// javascript_exports.js <bindings/javascript>: gputune.d.ts declares what gputune.js exports, and no more. Needs typescript.
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const ts = require('typescript');

const [, , bindings] = process.argv;
const file = path.join(bindings, 'gputune.d.ts');
const source = ts.createSourceFile(file, fs.readFileSync(file, 'utf8'), ts.ScriptTarget.Latest);
const gputune = require(bindings);

function declarations(kind, name) {
    return source.statements.filter((statement) => statement.kind === kind && (!name || statement.name.text === name));
}
function members(kind, name) {
    return declarations(kind, name)[0].members.map((member) => member.name?.text ?? 'constructor').sort();
}

const { SyntaxKind } = ts;
const values = [
    ...declarations(SyntaxKind.ClassDeclaration).map(({ name }) => name.text),
    ...declarations(SyntaxKind.FunctionDeclaration).map(({ name }) => name.text),
    ...declarations(SyntaxKind.VariableStatement).map(({ declarationList }) => declarationList.declarations[0].name.text),
];
// What the tests compare with the header is no part of the interface.
assert.deepEqual(values.sort(), Object.keys(gputune).filter((name) => !/^(records|prototypes)$/.test(name)).sort());
assert.deepEqual(members(SyntaxKind.ClassDeclaration, 'Gputune'),
    Object.getOwnPropertyNames(gputune.Gputune.prototype).sort());
assert.deepEqual(members(SyntaxKind.InterfaceDeclaration, 'Library'),
    gputune.prototypes.map((prototype) => /(\w+)\(/.exec(prototype)[1]).sort());
for (const statement of declarations(SyntaxKind.VariableStatement)) {
    const [{ name, type }] = statement.declarationList.declarations;
    assert.deepEqual(Object.fromEntries(type.typeArguments[0].members.map((member) =>
        [member.name.text, Number(member.type.literal.text)])), gputune[name.text], name.text);
}
console.log('as declared');

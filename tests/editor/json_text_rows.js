// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The text edits: exact rows, then random edits of random texts against JSON.parse and a plain model.

import {JsonError, nodeAt, readJson, valueOf} from '/page/json_reader.js';
import {
    copyItem, insertItem, moveItem, removeItem, removeMember, renameMember, setValue,
} from '/page/json_text.js';
import {expectSame, expectThrow} from '/tests/test_rows.js';

const TWO = '{\n  "overlay": [\n    {\n      "formatString": "A",\n      "textSize": 20\n    },\n    { "formatString": "B" }\n  ]\n}\n';

const EDITS = [
    // name, text, edit, expected text
    ['one number', TWO, (t) => setValue(t, ['overlay', 0, 'textSize'], 21), TWO.replace('20', '21')],
    ['the same value in other digits', '{"a": 1.50}', (t) => setValue(t, ['a'], 1.5), '{"a": 1.50}'],
    ['the same text in escapes', '{"a": "\\u00b0"}', (t) => setValue(t, ['a'], '°'), '{"a": "\\u00b0"}'],
    ['a text with a line feed', '{"a": "x"}', (t) => setValue(t, ['a'], 'x\n"°'), '{"a": "x\\n\\"°"}'],
    ['a member below the others', TWO, (t) => setValue(t, ['overlay', 0, 'thickness'], 2),
        TWO.replace('20\n', '20,\n      "thickness": 2\n')],
    ['a member in one line', TWO, (t) => setValue(t, ['overlay', 1, 'thickness'], 2),
        TWO.replace('"B" }', '"B", "thickness": 2 }')],
    ['a member with its object', TWO, (t) => setValue(t, ['overlay', 1, 'position', 'x'], 0.5),
        TWO.replace('"B" }', '"B", "position": { "x": 0.5 } }')],
    ['a member of an empty object', '{"a":{}}', (t) => setValue(t, ['a', 'b'], 1), '{"a":{"b":1}}'],
    ['a member of an object open over lines', '{\n  "a": {\n  }\n}', (t) => setValue(t, ['a', 'b'], 1),
        '{\n  "a": {\n    "b": 1\n  }\n}'],
    ['a member of a compact text', '{"a":1,"b":2}', (t) => setValue(t, ['c'], true), '{"a":1,"b":2,"c":true}'],
    ['tabs and carriage returns', '{\r\n\t"a": 1\r\n}', (t) => setValue(t, ['b'], 2), '{\r\n\t"a": 1,\r\n\t"b": 2\r\n}'],
    ['commas at the line start', '{ "a": 1\n, "b": 2\n}', (t) => setValue(t, ['c'], 3), '{ "a": 1\n, "b": 2, "c": 3\n}'],
    ['an object in the place of a number', '{"position": 5}', (t) => setValue(t, ['position', 'x'], 1),
        '{"position": {"x": 1}}'],
    ['a repeated member: the last one counts', '{"a": 1, "a": 2}', (t) => setValue(t, ['a'], 3), '{"a": 1, "a": 3}'],
    ['a name with quotes', '{}', (t) => setValue(t, ['a"b'], 1), '{ "a\\"b": 1 }'],
    ['the name __proto__', '{}', (t) => setValue(t, ['__proto__'], 1), '{ "__proto__": 1 }'],
    ['behind a trailing comma', '{"a": 1,}', (t) => setValue(t, ['b'], 2), '{"a": 1, "b": 2,}'],

    ['removes the first', '{"a": 1, "b": 2}', (t) => removeMember(t, ['a']), '{"b": 2}'],
    ['removes the last', '{\n  "a": 1,\n  "b": 2\n}', (t) => removeMember(t, ['b']), '{\n  "a": 1\n}'],
    ['removes the only one', '{\n  "a": 1\n}', (t) => removeMember(t, ['a']), '{}'],
    ['removes all of the name', '{"a": 1, "b": 2, "a": 3}', (t) => removeMember(t, ['a']), '{"b": 2}'],
    ['removes nothing', '{"a": 1}', (t) => removeMember(t, ['b']), '{"a": 1}'],

    ['renames', '{"a\\u0062" : {"c":1}}', (t) => renameMember(t, ['ab'], 'd'), '{"d" : {"c":1}}'],
    ['renames the one that counts', '{"a": 1, "a": 2}', (t) => renameMember(t, ['a'], 'b'), '{"b": 2}'],

    ['an item between', TWO, (t) => insertItem(t, ['overlay'], 1, {formatString: 'N'}),
        TWO.replace('    { "f', '    {\n      "formatString": "N"\n    },\n    { "f')],
    ['an item at the end', TWO, (t) => insertItem(t, ['overlay'], 2, {formatString: 'N'}),
        TWO.replace('"B" }', '"B" },\n    {\n      "formatString": "N"\n    }')],
    ['the first item', '{"overlay": []}', (t) => insertItem(t, ['overlay'], 0, {a: 1, b: 2}),
        '{"overlay": [\n  {\n    "a": 1,\n    "b": 2\n  }\n]}'],
    ['the first item of a compact text', '{"overlay":[]}', (t) => insertItem(t, ['overlay'], 0, {a: 1}),
        '{"overlay":[{"a":1}]}'],
    ['the first scalar', '{"a": []}', (t) => insertItem(t, ['a'], 0, 'N/A'), '{"a": ["N/A"]}'],
    ['a scalar among others', '{"a": [0, 1]}', (t) => insertItem(t, ['a'], 0, 'N/A'), '{"a": ["N/A", 0, 1]}'],
    ['copies', '{"a": [{ "b":1 }]}', (t) => copyItem(t, ['a'], 0), '{"a": [{ "b":1 }, { "b":1 }]}'],
    ['copies in lines', TWO, (t) => copyItem(t, ['overlay'], 1), TWO.replace('{ "formatString": "B" }',
        '{ "formatString": "B" },\n    { "formatString": "B" }')],
    ['removes an item', '[1, 2,\n 3]', (t) => removeItem(t, [], 1), '[1, 3]'],
    ['moves down', '[1,  [2], 3]', (t) => moveItem(t, [], 0, 2), '[[2],  3, 1]'],
    ['moves up', '[1,  [2], 3]', (t) => moveItem(t, [], 2, 0), '[3,  1, [2]]'],
];

const WRONG = [
    ['', 1, 1], ['{"a": 1', 1, 8], ['{\n  "a" 1}', 2, 7], ['{\r\n"a": 01}', 2, 7], ['{"a": nul}', 1, 7],
    ['{"a": "\\x"}', 1, 9], ['{"a": "\\u12g4"}', 1, 9], ['{"a": "b\nc"}', 1, 9], ['{} {}', 1, 4], ['[1 2]', 1, 4], ['{a: 1}', 1, 2],
    ['[,]', 1, 2], ['['.repeat(1000), 1, 202],
];

/// A small generator with a seed, so that a failure can be seen again.
function randomFrom(seed) {
    let state = Math.imul(seed, 0x9e3779b1);
    return (below) => {
        state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
        return Math.floor((state / 2 ** 32) * below);
    };
}

const NAMES = ['a', 'b', 'formatString', 'a.b', 'ké', '"q"', '', '__proto__', '0', '😀'];

function randomValue(random, depth) {
    const pick = random(depth > 2 ? 5 : 8);
    if (pick >= 6) {
        return Object.fromEntries(Array.from({length: random(4)}, () => [NAMES[random(10)], randomValue(random, depth + 1)]));
    }
    return [null, random(2) === 0, random(2000) / 8 - 100, 'x%{y}\n\t"\\°' + random(9), `${random(99)}`,
        pick === 5 ? Array.from({length: random(4)}, () => randomValue(random, depth + 1)) : 0][pick];
}

const BLANKS = ['', '', ' ', '  ', '\t', '\n', '\r\n', '\n    ', '\r\n\t'];

/// The value written with any blanks, some escapes, and some members repeated before the one that counts.
function writtenAnyhow(value, random) {
    const blank = () => BLANKS[random(BLANKS.length)];
    if (Array.isArray(value)) {
        return `[${blank()}${value.map((item) => blank() + writtenAnyhow(item, random) + blank()).join(',')}]`;
    }
    if (value !== null && typeof value === 'object') {
        const members = Object.entries(value).map(([name, item]) => {
            const start = blank() + textAnyhow(name, random) + blank() + ':' + blank();
            const twice = random(8) === 0 ? start + '"old",' : '';
            return twice + start + writtenAnyhow(item, random) + blank();
        });
        return `{${members.join(',')}${blank()}}`;
    }
    return typeof value === 'string' ? textAnyhow(value, random) : JSON.stringify(value);
}

function textAnyhow(value, random) {
    const escape = (letter) => `\\u${letter.charCodeAt(0).toString(16).padStart(4, '0')}`;
    return JSON.stringify(value).replace(/[a-zé]/g, (letter, at, all) =>
        (random(9) === 0 && all[at - 1] !== '\\' ? escape(letter) : letter));
}

/// The paths of all containers of a value.
function containers(value, path = []) {
    if (value === null || typeof value !== 'object') {
        return [];
    }
    const steps = Array.isArray(value) ? value.map((_, index) => index) : Object.keys(value);
    return [path, ...steps.flatMap((step) => containers(value[step], [...path, step]))];
}

/// Any order of members is the same value.
function sorted(value) {
    if (Array.isArray(value)) {
        return value.map(sorted);
    }
    if (value !== null && typeof value === 'object') {
        return Object.keys(value).sort().map((name) => [name, sorted(value[name])]);
    }
    return value;
}

function at(model, path) {
    return path.reduce((value, step) => value[step], model);
}

function define(object, name, value) {
    Object.defineProperty(object, name, {value, enumerable: true, configurable: true, writable: true});
}

/// The source texts of all values that stand beside the path, but for members of the last object that were touched.
function untouched(text, path, touched) {
    const besides = [];
    let node = readJson(text);
    for (const step of [...path, null]) {
        const parts = node.kind === 'object'
            ? node.members.map((member) => [member.name, member.start, member.node.end])
            : node.items.map((item, index) => [index, item.start, item.end]);
        const isLast = step === null;
        if (!isLast || node.kind === 'object') {
            besides.push(parts.filter(([name]) => (isLast ? !touched.includes(name) : name !== step))
                .map(([, start, end]) => text.slice(start, end)));
        }
        node = isLast ? node : nodeAt(node, [step]);
    }
    return besides;
}

function randomObjectEdit(text, path, target, random) {
    const names = Object.keys(target);
    const name = random(2) === 0 || names.length === 0 ? NAMES[random(10)] : names[random(names.length)];
    const other = NAMES[random(10)];
    const value = randomValue(random, 2);
    switch (random(3)) {
    case 0:
        define(target, name, value);
        return [setValue(text, [...path, name], value), [name]];
    case 1:
        delete target[name];
        return [removeMember(text, [...path, name]), [name]];
    default:
        if (Object.hasOwn(target, other) || !Object.hasOwn(target, name)) {
            return [text, []];
        }
        define(target, other, target[name]);
        delete target[name];
        return [renameMember(text, [...path, name], other), [name, other]];
    }
}

function randomArrayEdit(text, path, target, random) {
    const [from, to] = [random(target.length || 1), random(target.length || 1)];
    const value = randomValue(random, 2);
    switch (target.length === 0 ? 0 : random(5)) {
    case 0:
        target.splice(to, 0, value);
        return [insertItem(text, path, to, value), []];
    case 1:
        target.splice(from + 1, 0, structuredClone(target[from]));
        return [copyItem(text, path, from), []];
    case 2:
        target.splice(from, 1);
        return [removeItem(text, path, from), []];
    case 3:
        target[from] = value;
        return [setValue(text, [...path, from], value), []];
    default:
        target.splice(to, 0, ...target.splice(from, 1));
        return [moveItem(text, path, from, to), []];
    }
}

/// Changes text and model alike, again and again: they stay the same, and what was not meant keeps its every character.
function randomRun(seed) {
    const random = randomFrom(seed);
    const model = {overlay: Array.from({length: random(4)}, () => randomValue(random, 0)), b: randomValue(random, 1)};
    let text = writtenAnyhow(model, random);
    expectSame(valueOf(readJson(text)), JSON.parse(text), 'read');
    for (let edit = 0; edit < 8; edit += 1) {
        const paths = containers(model);
        const path = paths[random(paths.length)];
        const target = at(model, path);
        const change = Array.isArray(target) ? randomArrayEdit : randomObjectEdit;
        const [after, touched] = change(text, path, target, random);
        const what = `edit ${edit} of ${JSON.stringify(text)} to ${after}`;
        expectSame(sorted(JSON.parse(after)), sorted(model), what);
        expectSame(untouched(after, path, touched), untouched(text, path, touched), what);
        text = after;
    }
}

/// Setting one scalar of a text leaves all before it and all behind it.
function spliceRun(seed) {
    const random = randomFrom(seed);
    const model = {a: randomValue(random, 1), target: 1, z: randomValue(random, 1)};
    const text = writtenAnyhow(model, random);
    const node = nodeAt(readJson(text), ['target']);
    expectSame(setValue(text, ['target'], 7), text.slice(0, node.start) + '7' + text.slice(node.end));
}

export function jsonTextRows(rows) {
    // Former bug: such numbers were rounded to those that a Number holds.
    rows.row('long whole numbers keep their digits', () => expectSame(
        setValue('{"a": 9007199254740993}', ['a'], 9007199254740992n), '{"a": 9007199254740992}'));
    rows.row('the same long number changes nothing', () => expectSame(
        setValue('{"a": 9007199254740993}', ['a'], 9007199254740993n), '{"a": 9007199254740993}'));
    for (const [name, text, edit, expected] of EDITS) {
        rows.row(name, () => expectSame(edit(text), expected));
    }
    for (const [text, line, column] of WRONG) {
        rows.row(`error of ${text.slice(0, 20)}`, () => {
            try {
                readJson(text);
            } catch (error) {
                expectSame([error instanceof JsonError, error.line, error.column], [true, line, column], error.message);
                return;
            }
            throw new Error('was accepted');
        });
    }
    rows.row('a name that is taken', () =>
        expectThrow(() => renameMember('{"a": 1, "b": 2}', ['a'], 'b'), /^b stands there already$/));
    rows.row('white space of the plugin', () => expectSame(valueOf(readJson('\v{"a":\f[1,],}\n')), {a: [1]}));
    for (let seed = 1; seed <= 3000; seed += 1) {
        rows.row(`random edits ${seed}`, () => randomRun(seed));
        rows.row(`untouched ${seed}`, () => spliceRun(seed));
    }
}

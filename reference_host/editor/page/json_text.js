// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Changes of a JSON text that leave every character alone which does not belong to the change. New parts are laid out
// like their neighbours. Every function takes the text and gives the new one; a change that changes nothing gives the
// text itself. Paths are of names and indices: ['overlay', 0, 'position', 'x'].

import {asJson, memberOf, nodeAt, readJson, valueOf} from './json_reader.js';

function splice(text, start, end, replacement) {
    return text.slice(0, start) + replacement + text.slice(end);
}

function isSame(one, other) {
    return asJson(one) === asJson(other);
}

/// How the text is laid out: line ending, one step of indentation, blanks behind colons and commas and inside of braces.
function styleOf(text) {
    const isTight = /":\S/.test(text) && !/": /.test(text);
    return {
        lineEnd: /\r\n|\n|\r/.exec(text)?.[0] ?? '\n',
        step: /(?:\r\n|\n|\r)([ \t]+)/.exec(text)?.[1] ?? '  ',
        colon: isTight ? ':' : ': ',
        comma: isTight ? ',' : ', ',
        brace: /\{"/.test(text) && !/\{ "/.test(text) ? '' : ' ',
        isCompact: isTight && !/[\r\n]/.test(text),
    };
}

/// The blanks at the start of the line in which `offset` stands.
function indentationAt(text, offset) {
    const lineStart = Math.max(text.lastIndexOf('\n', offset - 1), text.lastIndexOf('\r', offset - 1)) + 1;
    return /^[ \t]*/.exec(text.slice(lineStart))[0];
}

/// One line of JSON in the text's style.
function written(value, style) {
    if (Array.isArray(value)) {
        return `[${value.map((item) => written(item, style)).join(style.comma)}]`;
    }
    if (value !== null && typeof value === 'object') {
        const members = Object.entries(value).map(
            ([name, item]) => JSON.stringify(name) + style.colon + written(item, style));
        return members.length === 0 ? '{}' : `{${style.brace}${members.join(style.comma)}${style.brace}}`;
    }
    return asJson(value);
}

/// An object with a line for each member.
function writtenInLines(value, style, indentation) {
    const inner = style.lineEnd + indentation + style.step;
    const members = Object.entries(value).map(
        ([name, item]) => inner + JSON.stringify(name) + style.colon + written(item, style));
    return members.length === 0 ? '{}' : `{${members.join(',')}${style.lineEnd}${indentation}}`;
}

/// Where the parts of a container start and end: its members with their names, or its items.
function partsOf(node) {
    return node.kind === 'object' ? node.members.map((member) => ({start: member.start, end: member.node.end}))
                                  : node.items.map((item) => ({start: item.start, end: item.end}));
}

/// What stands between two parts behind the comma: taken from the neighbours of a new part at `index`.
function gapAt(text, node, index) {
    const parts = partsOf(node);
    const near = Math.min(Math.max(index, 1), parts.length - 1);
    if (parts.length > 1) {
        const between = text.slice(parts[near - 1].end, parts[near].start);
        return between.slice(between.indexOf(',') + 1);
    }
    const lead = text.slice(node.start + 1, parts[0].start);
    return /[\r\n]/.test(lead) ? lead : styleOf(text).comma.slice(1);
}

/// Puts the text of a new part into a container, before its part number `index`.
function insertPart(text, node, index, part) {
    const parts = partsOf(node);
    if (index < parts.length) {
        const start = parts[index].start;
        return splice(text, start, start, part + ',' + gapAt(text, node, index));
    }
    const end = parts[parts.length - 1].end;
    return splice(text, end, end, ',' + gapAt(text, node, index) + part);
}

/// A container that was empty, with its first part; in lines when asked for or when it was open over several.
function fillEmpty(text, node, part, inLines) {
    const style = styleOf(text);
    const [open, close] = node.kind === 'object' ? ['{', '}'] : ['[', ']'];
    const interior = text.slice(node.start + 1, node.end - 1);
    if (inLines || /[\r\n]/.test(interior)) {
        const indentation = indentationAt(text, node.start);
        const inner = style.lineEnd + indentation + style.step;
        return splice(text, node.start, node.end, open + inner + part + style.lineEnd + indentation + close);
    }
    const blank = node.kind === 'object' ? style.brace : '';
    return splice(text, node.start, node.end, open + blank + part + blank + close);
}

function removePart(text, node, index) {
    const parts = partsOf(node);
    if (parts.length === 1) {
        return splice(text, node.start + 1, node.end - 1, '');
    }
    return index + 1 < parts.length ? splice(text, parts[index].start, parts[index + 1].start, '')
                                    : splice(text, parts[index - 1].end, parts[index].end, '');
}

function addMember(text, object, name, value) {
    const part = JSON.stringify(name) + styleOf(text).colon + written(value, styleOf(text));
    return object.members.length === 0 ? fillEmpty(text, object, part, false)
                                       : insertPart(text, object, object.members.length, part);
}

/// Sets the value at the path. Objects that are missing on the way are made, also in the place of other values.
export function setValue(text, path, value) {
    const root = readJson(text);
    const present = nodeAt(root, path);
    if (present) {
        return isSame(valueOf(present), value) ? text
                                               : splice(text, present.start, present.end, written(value, styleOf(text)));
    }
    const parent = nodeAt(root, path.slice(0, -1));
    const name = path[path.length - 1];
    if (parent?.kind === 'object' && typeof name === 'string') {
        return addMember(text, parent, name, value);
    }
    if (path.length < 2 || typeof name === 'number') {
        throw new RangeError(`no place for ${path.join('.')}`);
    }
    return setValue(text, path.slice(0, -1), {[name]: value});
}

/// Removes a member; all of them when its name is repeated, for else an earlier one would count again.
export function removeMember(text, path) {
    const name = path[path.length - 1];
    for (;;) {
        const parent = nodeAt(readJson(text), path.slice(0, -1));
        const index = parent?.kind === 'object' ? parent.members.findLastIndex((member) => member.name === name) : -1;
        if (index < 0) {
            return text;
        }
        text = removePart(text, parent, index);
    }
}

/// Gives a member another name; earlier members of its old name go. Refuses a name that is taken.
export function renameMember(text, path, name) {
    const parentPath = path.slice(0, -1);
    const oldName = path[path.length - 1];
    const parent = nodeAt(readJson(text), parentPath);
    const index = parent?.kind === 'object' ? parent.members.findLastIndex((member) => member.name === oldName) : -1;
    if (index < 0 || oldName === name) {
        return text;
    }
    if (memberOf(parent, name)) {
        throw new RangeError(`${name} stands there already`);
    }
    const first = parent.members.findIndex((member) => member.name === oldName);
    if (first !== index) {
        return renameMember(removePart(text, parent, first), path, name);
    }
    const start = parent.members[index].start;
    return splice(text, start, endOfName(text, start), JSON.stringify(name));
}

function endOfName(text, start) {
    let at = start + 1;
    while (text[at] !== '"') {
        at += text[at] === '\\' ? 2 : 1;
    }
    return at + 1;
}

function arrayAt(text, path) {
    const node = nodeAt(readJson(text), path);
    if (node?.kind !== 'array') {
        throw new RangeError(`${path.join('.')} is no array`);
    }
    return node;
}

/// Puts a value into the array at the path, before item `index` or at the end. Objects get a line for each member
/// where the array stands in lines.
export function insertItem(text, path, index, value) {
    const array = arrayAt(text, path);
    const style = styleOf(text);
    const isObject = value !== null && typeof value === 'object' && !Array.isArray(value);
    if (array.items.length === 0) {
        const inLines = isObject && !style.isCompact;
        const indentation = indentationAt(text, array.start) + style.step;
        return fillEmpty(text, array, inLines ? writtenInLines(value, style, indentation) : written(value, style),
                         inLines);
    }
    const inLines = isObject && /[\r\n]/.test(gapAt(text, array, index));
    const indentation = indentationAt(text, array.items[Math.min(index, array.items.length - 1)].start);
    return insertPart(text, array, index,
                      inLines ? writtenInLines(value, style, indentation) : written(value, style));
}

/// A second item of the same text, behind the first.
export function copyItem(text, path, index) {
    const array = arrayAt(text, path);
    const item = array.items[index];
    return insertPart(text, array, index + 1, text.slice(item.start, item.end));
}

export function removeItem(text, path, index) {
    return removePart(text, arrayAt(text, path), index);
}

/// The items change places; what stands between them stays there.
export function moveItem(text, path, from, to) {
    const places = arrayAt(text, path).items;
    const order = places.map((item) => text.slice(item.start, item.end));
    order.splice(to, 0, ...order.splice(from, 1));
    return places.reduceRight((changed, place, index) => splice(changed, place.start, place.end, order[index]), text);
}

// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reads JSON and keeps where every value stands, so that an edit can leave all other characters as they are.
//
// It accepts what the plugin's reader accepts beyond the standard and a person may have written: a comma after the last
// item, vertical tabs and form feeds between values. Of members with the same name the last one counts.
//
// A node is {kind, start, end}; kind is "object", "array", "string", "number", "boolean" or "null". Scalars have `value`,
// arrays `items` (nodes), objects `members`: {name, start, node}, where start is that of the name's quotation mark.

/// Deeper texts are no configurations; the limit keeps the reader's own stack short.
const MAX_DEPTH = 200;

const ESCAPES = {'"': '"', '\\': '\\', '/': '/', b: '\b', f: '\f', n: '\n', r: '\r', t: '\t'};

/// What is wrong, with the line and column (both from 1) at which it was noticed.
export class JsonError extends Error {
    constructor(message, text, offset) {
        super(message);
        const before = text.slice(0, offset).split(/\r\n|\r|\n/);
        this.offset = offset;
        this.line = before.length;
        this.column = before[before.length - 1].length + 1;
    }
}

class Reader {
    constructor(text) {
        this.text = text;
        this.at = 0;
    }

    fail(message) {
        throw new JsonError(message, this.text, this.at);
    }

    skipBlanks() {
        while (this.at < this.text.length && ' \t\n\r\v\f'.includes(this.text[this.at])) {
            this.at += 1;
        }
    }

    document() {
        const root = this.value(0);
        this.skipBlanks();
        if (this.at < this.text.length) {
            this.fail('nothing may follow the end of the configuration');
        }
        return root;
    }

    value(depth) {
        if (depth > MAX_DEPTH) {
            this.fail('nested too deeply');
        }
        this.skipBlanks();
        const start = this.at;
        const node = {start, ...this.content(depth)};
        node.end = this.at;
        return node;
    }

    content(depth) {
        switch (this.text[this.at]) {
        case '{':
            return {kind: 'object', members: this.list('}', () => this.member(depth))};
        case '[':
            return {kind: 'array', items: this.list(']', () => this.value(depth + 1))};
        case '"':
            return {kind: 'string', value: this.string()};
        case undefined:
            return this.fail('the text ends too early');
        default:
            return this.literal();
        }
    }

    /// From the opening bracket to behind the closing one.
    list(close, readOne) {
        const found = [];
        this.at += 1;
        for (this.skipBlanks(); this.text[this.at] !== close; this.skipBlanks()) {
            found.push(readOne());
            this.skipBlanks();
            if (this.text[this.at] === ',') {
                this.at += 1;
            } else if (this.text[this.at] !== close) {
                this.fail(this.at < this.text.length ? `a comma or ${close} is missing` : 'the text ends too early');
            }
        }
        this.at += 1;
        return found;
    }

    member(depth) {
        const start = this.at;
        if (this.text[start] !== '"') {
            this.fail('a name in quotation marks is missing');
        }
        const name = this.string();
        this.skipBlanks();
        if (this.text[this.at] !== ':') {
            this.fail('a colon is missing');
        }
        this.at += 1;
        return {name, start, node: this.value(depth + 1)};
    }

    string() {
        let value = '';
        for (this.at += 1; this.text[this.at] !== '"'; this.at += 1) {
            const letter = this.text[this.at];
            if (letter === undefined || letter < ' ') {
                this.fail('a text is not closed');
            }
            value += letter === '\\' ? this.escape() : letter;
        }
        this.at += 1;
        return value;
    }

    /// Leaves the place at the escape's last character.
    escape() {
        this.at += 1;
        const letter = this.text[this.at];
        if (letter !== 'u') {
            return Object.hasOwn(ESCAPES, letter) ? ESCAPES[letter] : this.fail('no such escape');
        }
        const digits = this.text.slice(this.at + 1, this.at + 5);
        if (!/^[0-9a-fA-F]{4}$/.test(digits)) {
            this.fail('four hexadecimal digits are missing');
        }
        this.at += 4;
        return String.fromCharCode(parseInt(digits, 16));
    }

    literal() {
        const pattern = /true|false|null|-?(?:0|[1-9][0-9]*)(?:\.[0-9]+)?(?:[eE][-+]?[0-9]+)?/y;
        pattern.lastIndex = this.at;
        const word = pattern.exec(this.text)?.[0];
        if (word === undefined) {
            this.fail('no value stands here');
        }
        this.at += word.length;
        if (/[0-9]$/.test(word)) {
            return {kind: 'number', value: numberOf(word)};
        }
        const value = JSON.parse(word);
        return {kind: value === null ? 'null' : typeof value, value};
    }
}

/// The value of a JSON number. Whole numbers whose digits a Number does not hold, such as masks of 64 bits, are BigInt.
export function numberOf(word) {
    const value = Number(word);
    return /^-?(0|[1-9][0-9]*)$/.test(word) && !Number.isSafeInteger(value) ? BigInt(word) : value;
}

/// JSON in one line of a value with such numbers; undefined of undefined.
export function asJson(value) {
    if (typeof value === 'bigint') {
        return String(value);
    }
    if (Array.isArray(value)) {
        return `[${value.map(asJson).join(',')}]`;
    }
    if (value !== null && typeof value === 'object') {
        return `{${Object.entries(value).map(([name, item]) => `${JSON.stringify(name)}:${asJson(item)}`).join(',')}}`;
    }
    return JSON.stringify(value);
}

/// The root node; throws JsonError.
export function readJson(text) {
    return new Reader(text).document();
}

/// The member that counts, undefined without one.
export function memberOf(node, name) {
    return node?.kind === 'object' ? node.members.findLast((member) => member.name === name) : undefined;
}

/// The node at a path of names and indices, such as ['overlay', 0, 'textSize']; undefined where there is none.
export function nodeAt(root, path) {
    return path.reduce((node, step) => {
        if (typeof step === 'number') {
            return node?.kind === 'array' ? node.items[step] : undefined;
        }
        return memberOf(node, step)?.node;
    }, root);
}

/// The plain value of a node, numbers as numberOf gives them; undefined for none.
export function valueOf(node) {
    if (node?.kind === 'array') {
        return node.items.map(valueOf);
    }
    if (node?.kind === 'object') {
        return Object.fromEntries(node.members.map((member) => [member.name, valueOf(member.node)]));
    }
    return node?.value;
}

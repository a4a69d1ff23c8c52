// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One input for one scalar of the schema. Each has
//   element   what stands in the form
//   focus     the input that gets the label and the focus
//   read()    the value that it holds: undefined when cleared, UNFINISHED while no value can be made of it
//   show(v)   shows a value of the text, undefined for a member that is not there
// and calls `onInput` after a person changed it.

import {make} from './elements.js';
import {asJson, numberOf} from './json_reader.js';

export const UNFINISHED = Symbol('unfinished');

/// What the plugin does without a member where that differs from the published default, whose text is fixed.
const READ_AS = {
    'textSize': '16',
    'operator': 'exists, with an operand equals',
    'formats.trimTrailingZeros': 'false',
    'formats.timestampUnit': 'ms',
    'formats.decimals': '-1',
};

/// The text in the place of a value that is not there.
export function defaultText(schema, name, isMapEntry) {
    const known = READ_AS[isMapEntry ? `formats.${name}` : name];
    return known ?? (schema.default === undefined ? '' : String(schema.default));
}

function textInput(attributes, onInput) {
    return make('input', {type: 'text', spellcheck: 'false', autocomplete: 'off', oninput: onInput, ...attributes});
}

/// Any value in one line: texts as they are, all else as JSON.
function asLine(value) {
    return value === undefined ? '' : typeof value === 'string' ? value : asJson(value);
}

function stringInput(placeholder, onInput, more = {}) {
    const input = textInput({placeholder, ...more}, onInput);
    let isEmptyText = false;
    return {
        element: input,
        focus: input,
        read: () => (input.value === '' ? undefined : input.value),
        show(value) {
            isEmptyText = value === '';
            input.value = asLine(value);
            input.placeholder = isEmptyText ? '(empty text)' : placeholder;
        },
    };
}

function numberInput(schema, placeholder, onInput) {
    const isWhole = schema.type === 'integer';
    const input = make('input', {
        type: 'number', placeholder, oninput: onInput, step: 'any', inputmode: isWhole ? 'numeric' : 'decimal',
        onkeydown: (event) => stepByKey(event, input, schema, isWhole, onInput),
    });
    const read = () => {
        if (input.type === 'text') {
            return input.value === '' ? undefined : input.value;
        }
        if (input.validity.badInput) {
            return UNFINISHED;
        }
        return input.value === '' ? undefined : numberOf(input.value);
    };
    return {
        element: input,
        focus: input,
        read,
        show(value) {
            // A text where a number should be is shown as it is, not lost.
            input.type = ['undefined', 'number', 'bigint'].includes(typeof value) ? 'number' : 'text';
            input.value = asLine(value);
        },
    };
}

/// Up and down step by one; numbers between 0 and 1 by a hundredth; with Shift ten times that.
function stepByKey(event, input, schema, isWhole, onInput) {
    if (input.type !== 'number' || (event.key !== 'ArrowUp' && event.key !== 'ArrowDown')) {
        return;
    }
    event.preventDefault();
    const isFraction = !isWhole && schema.maximum === 1;
    const step = (isFraction ? 0.01 : 1) * (event.shiftKey ? 10 : 1) * (event.key === 'ArrowUp' ? 1 : -1);
    const start = input.value === '' ? Number(input.placeholder) || 0 : Number(input.value);
    const least = Math.min(schema.minimum ?? -Infinity, schema.default ?? Infinity);
    const most = schema.maximum ?? Infinity;
    input.value = String(Number(Math.min(Math.max(start + step, least), most).toFixed(6)));
    onInput();
}

/// A list of fixed choices with one for "not set"; a present value that is none of them stays as one more.
function choiceInput(values, placeholder, onInput) {
    const select = make('select', {onchange: onInput});
    const notSet = make('option', {value: ''}, placeholder === '' ? 'not set' : `not set: ${placeholder}`);
    const extra = make('option', {value: 'extra'});
    let extraValue;
    select.append(notSet, ...values.map((value, index) => make('option', {value: String(index)}, String(value))));
    return {
        element: select,
        focus: select,
        read: () => (select.value === '' ? undefined : select.value === 'extra' ? extraValue : values[Number(select.value)]),
        show(value) {
            const index = values.indexOf(value);
            extra.remove();
            if (value !== undefined && index < 0) {
                extraValue = value;
                extra.textContent = asLine(value);
                select.append(extra);
            }
            select.value = value === undefined ? '' : index < 0 ? 'extra' : String(index);
        },
    };
}

function colorInput(placeholder, onInput) {
    const text = stringInput(placeholder, onInput, {class: 'color-text', maxlength: '40'});
    const picker = make('input', {
        type: 'color', 'aria-label': 'Pick a colour', oninput: () => {
            text.focus.value = picker.value;
            onInput();
        },
    });
    const showPicked = () => {
        const value = text.read() ?? placeholder;
        picker.value = /^#[0-9a-fA-F]{6}$/.test(value) ? value : '#000000';
    };
    text.focus.addEventListener('input', showPicked);
    return {
        ...text,
        element: make('span', {class: 'color'}, picker, text.element),
        show(value) {
            text.show(value);
            showPicked();
        },
    };
}

/// Numbers, true, false and texts in one input: what reads as one of the first is one, unless a text stood there.
function anyInput(types, placeholder, onInput) {
    const kind = make('span', {class: 'kind', 'aria-live': 'off'});
    let wasQuoted = false;
    const input = textInput({placeholder}, () => {
        showKind();
        onInput();
    });
    const read = () => {
        const typed = input.value;
        if (typed === '') {
            return undefined;
        }
        const isNumber = /^-?(0|[1-9]\d*)(\.\d+)?([eE][-+]?\d+)?$/.test(typed) && Number.isFinite(Number(typed));
        if (isNumber && !wasQuoted && (types.includes('number') || (types.includes('integer') && /^-?\d+$/.test(typed)))) {
            return numberOf(typed);
        }
        const isSwitch = typed === 'true' || typed === 'false';
        return isSwitch && !wasQuoted && types.includes('boolean') ? typed === 'true' : typed;
    };
    const showKind = () => {
        const value = read();
        kind.textContent = value === undefined ? '' : {string: 'text', number: 'number', bigint: 'number', boolean: 'switch'}[typeof value];
    };
    return {
        element: make('span', {class: 'any'}, input, kind),
        focus: input,
        read,
        show(value) {
            wasQuoted = typeof value === 'string' && value !== '' && /^(-?[\d.]+([eE][-+]?\d+)?|true|false)$/.test(value);
            input.value = asLine(value);
            showKind();
        },
    };
}

function isColor(schema) {
    return schema.pattern !== undefined && new RegExp(schema.pattern).test('#0a1b2c');
}

/// The input that the schema asks for. `placeholder` is what counts while nothing is set.
export function scalarInput(schema, placeholder, onInput) {
    if (Array.isArray(schema.type)) {
        return anyInput(schema.type, placeholder, onInput);
    }
    if (schema.enum) {
        return choiceInput(schema.enum, placeholder, onInput);
    }
    switch (schema.type) {
    case 'boolean':
        return choiceInput([true, false], placeholder, onInput);
    case 'integer':
    case 'number':
        return numberInput(schema, placeholder, onInput);
    default:
        return isColor(schema) ? colorInput(placeholder, onInput) : stringInput(placeholder, onInput);
    }
}

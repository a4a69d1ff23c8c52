// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The schema's objects as form parts. Every part has `element`, `show(node, path)` for the present text (node undefined:
// the member is not there), and changes the text only for what a person set: a cleared field removes its member.

import {iconButton, make, newId} from './elements.js';
import {asJson, nodeAt, readJson, valueOf} from './json_reader.js';
import {insertItem, removeItem, removeMember, renameMember, setValue} from './json_text.js';
import {placeOf} from './places.js';
import {defaultText, scalarInput, UNFINISHED} from './scalar_inputs.js';
import {templateInput} from './template_input.js';

/// The name by which the form knows the members of a map's entries.
const isMap = (schema) => schema.type === 'object' && typeof schema.additionalProperties === 'object';
const isList = (schema) => schema.type === 'array';
const isGroup = (schema) => schema.type === 'object' && !isMap(schema);

function hintOf(schema) {
    const {minimum, maximum} = schema;
    const bounds = minimum !== undefined && maximum !== undefined ? `${minimum} to ${maximum}` : '';
    return [schema.description ?? '', bounds].filter((part) => part !== '').join(' · ');
}

/// Removes a member, and the group that it leaves empty. Entries of maps and blocks stay: empty ones have a meaning.
function clearMember(text, path, isGroupMember) {
    const removed = removeMember(text, path);
    const parent = path.slice(0, -1);
    const isEmpty = nodeAt(readJson(removed), parent)?.members?.length === 0;
    return isGroupMember && isEmpty ? removeMember(removed, parent) : removed;
}

/// Findings are shown at the element of the member that they name.
function standAt(element, path) {
    element.dataset.place = placeOf(path);
    element.path = path;
}

/// The row of one member: label, input, a button that clears it, its hint, and a place for findings.
class FieldRow {
    constructor(name, schema, context, owner) {
        this.context = context;
        this.owner = owner;
        const onInput = () => this.write();
        const placeholder = defaultText(schema, name, owner === 'entry');
        const isTemplate = schema['x-ui-widget'] === 'textarea';
        this.input = isTemplate ? templateInput(context, placeholder, onInput) : scalarInput(schema, placeholder, onInput);
        if (name === 'key') {
            this.input.focus.setAttribute('list', 'keys');
        }
        const id = newId('field');
        const hint = hintOf(schema);
        const hintId = hint === '' ? undefined : `${id}-hint`;
        this.input.focus.id = id;
        this.input.focus.setAttribute('aria-describedby', [`${id}-notes`, hintId].filter(Boolean).join(' '));
        this.input.focus.addEventListener('blur', () => {
            context.leaveField();
            this.show(this.node, this.path);
        });
        this.clear = iconButton('clear', `Clear ${name}`, () => this.clearNow(), {tabindex: '-1'});
        // A text that is empty on purpose differs from one that is not set.
        const canBeEmpty = schema.type === 'string' && !schema.enum && (schema.default ?? '#')[0] !== '#';
        this.empty = canBeEmpty && make('button', {type: 'button', class: 'small', title: `Set ${name} to the empty text`,
                                                   'aria-label': `Set ${name} to the empty text`,
                                                   onclick: () => this.set('')}, '""');
        this.element = make('div', {class: isTemplate ? 'field wide' : 'field'},
                            make('label', {for: id}, name),
                            make('div', {class: 'control'}, this.input.element, this.empty || '', this.clear),
                            hint === '' ? '' : make('p', {class: 'hint', id: hintId}, hint),
                            make('div', {class: 'notes', id: `${id}-notes`}));
    }

    write() {
        const value = this.input.read();
        if (value === UNFINISHED) {
            return;
        }
        this.set(value);
    }

    set(value) {
        const path = this.path;
        this.context.changeField((text) => (value === undefined ? clearMember(text, path, this.owner === 'group')
                                                                : setValue(text, path, value)), placeOf(path));
    }

    clearNow() {
        this.set(undefined);
        this.show(undefined, this.path);
        this.input.focus.focus();
    }

    show(node, path) {
        this.node = node;
        this.path = path;
        standAt(this.element, path);
        this.element.classList.toggle('is-set', node !== undefined);
        this.clear.hidden = node === undefined;
        if (this.empty) {
            this.empty.hidden = node !== undefined;
        }
        const value = valueOf(node);
        const isBeingTyped = document.activeElement === this.input.focus;
        const typed = this.input.read();
        // What a person is typing stays as typed, as long as it means what stands in the text.
        if (!isBeingTyped || (typed !== UNFINISHED && asJson(typed) !== asJson(value))) {
            this.input.show(value);
        }
        this.input.refresh?.();
    }
}

/// A member that the schema does not know, as JSON in a line; it can be removed, not lost.
class UnknownRow {
    constructor(name, context) {
        this.value = make('code', {});
        this.element = make('div', {class: 'field wide unknown-member'},
                            make('span', {class: 'label'}, name),
                            make('div', {class: 'control'}, this.value,
                                 iconButton('remove', `Remove ${name}`,
                                            () => context.change((text) => removeMember(text, this.path)))),
                            make('div', {class: 'notes'}));
    }

    show(node, path) {
        this.path = path;
        standAt(this.element, path);
        this.value.textContent = asJson(valueOf(node));
    }
}

/// A list of scalars.
class ListPart {
    constructor(name, schema, context) {
        this.schema = schema;
        this.context = context;
        this.name = name;
        this.rows = make('ol', {class: 'list', 'aria-label': name});
        this.add = make('button', {type: 'button', class: 'small', onclick: () => this.addItem()}, 'Add a value');
        const hint = hintOf(schema);
        this.element = make('div', {class: 'field wide', role: 'group', 'aria-label': name},
                            make('span', {class: 'label'}, name), this.rows, this.add,
                            hint === '' ? '' : make('p', {class: 'hint'}, hint), make('div', {class: 'notes'}));
        this.inputs = [];
    }

    addItem() {
        const {path, node} = this;
        this.context.change((text) => (node?.kind === 'array' ? insertItem(text, path, node.items.length, 0)
                                                              : setValue(text, path, [0])));
        this.inputs.at(-1)?.focus.focus();
        this.inputs.at(-1)?.focus.select();
    }

    removeAt(index) {
        const {path, node} = this;
        this.context.change((text) => (node.items.length === 1 ? removeMember(text, path) : removeItem(text, path, index)));
        this.add.focus();
    }

    makeInput(index) {
        const input = scalarInput(this.schema.items, '', () => {
            const value = input.read();
            const path = [...this.path, index];
            if (value !== undefined && value !== UNFINISHED) {
                this.context.changeField((text) => setValue(text, path, value), placeOf(path));
            }
        });
        input.focus.setAttribute('aria-label', `${this.name} ${index + 1}`);
        this.rows.append(make('li', {class: 'field'}, make('div', {class: 'control'}, input.element,
            iconButton('clear', `Remove value ${index + 1}`, () => this.removeAt(index))), make('div', {class: 'notes'})));
        return input;
    }

    show(node, path) {
        this.node = node;
        this.path = path;
        standAt(this.element, path);
        this.element.classList.toggle('is-set', node !== undefined);
        const items = node?.kind === 'array' ? node.items : [];
        if (items.length !== this.inputs.length) {
            this.rows.replaceChildren();
            this.inputs = [];
            items.forEach((_, index) => this.inputs.push(this.makeInput(index)));
        }
        items.forEach((item, index) => {
            const input = this.inputs[index];
            standAt(this.rows.children[index], [...path, index]);
            if (document.activeElement !== input.focus || asJson(input.read()) !== asJson(valueOf(item))) {
                input.show(valueOf(item));
            }
        });
    }
}

/// One entry of a map: its key, which can be renamed, and its members.
class MapEntry {
    constructor(key, schema, context) {
        this.key = key;
        this.context = context;
        this.input = make('input', {type: 'text', list: 'keys', spellcheck: 'false', 'aria-label': `Key, now ${key}`,
                                    onchange: () => this.rename(), value: key});
        this.input.value = key;
        this.value = make('span', {class: 'value'});
        this.members = new ObjectPart(schema, context, 'entry');
        this.summary = make('summary', {});
        this.fold = make('details', {}, this.summary, this.members.element);
        this.element = make('div', {class: 'entry', role: 'group', 'aria-label': `Format of ${key}`},
                            make('div', {class: 'entry-head'}, this.input, this.value,
                                 iconButton('remove', `Remove the format of ${key}`, () => this.remove())),
                            make('div', {class: 'notes'}), this.fold);
    }

    remove() {
        this.context.change((text) => clearMember(text, this.path, true));
    }

    rename() {
        const name = this.input.value;
        const {path} = this;
        if (name === this.key || name === '') {
            this.input.value = this.key;
            return;
        }
        try {
            this.context.change((text) => renameMember(text, path, name));
            this.context.focusSoon(placeOf([...path.slice(0, -1), name]));
        } catch (error) {
            this.context.say(error.message);
            this.input.value = this.key;
        }
    }

    show(node, path) {
        this.path = path;
        standAt(this.element, path);
        this.value.textContent = this.context.valueText(this.key);
        this.element.classList.toggle('unknown', !this.context.isKnownKey(this.key));
        const set = (node?.members ?? []).map(({name, node: member}) => `${name} ${asJson(valueOf(member))}`);
        this.summary.textContent = set.length === 0 ? 'nothing set' : set.join(' · ');
        this.members.show(node, path);
    }
}

/// A map of keys to objects of one schema.
class MapPart {
    constructor(name, schema, context) {
        this.schema = schema.additionalProperties;
        this.context = context;
        this.entries = new Map();
        this.rows = make('div', {class: 'entries'});
        const id = newId('add');
        this.input = make('input', {type: 'text', list: 'keys', id, spellcheck: 'false', placeholder: 'telemetry key',
                                    onkeydown: (event) => {
                                        if (event.key === 'Enter') {
                                            this.add();
                                        }
                                    }});
        this.element = make('div', {}, this.rows, make('div', {class: 'adder'}, make('label', {for: id}, 'Format for'),
            this.input, make('button', {type: 'button', class: 'small', onclick: () => this.add()}, 'Add')));
        this.name = name;
    }

    add() {
        const key = this.input.value.trim();
        const path = [...this.path, key];
        if (key === '') {
            this.input.focus();
            return;
        }
        if (this.entries.has(key)) {
            this.context.say(`${key} has a format already`);
        } else {
            this.context.change((text) => setValue(text, path, {}));
            this.entries.get(key).fold.open = true;
            this.input.value = '';
        }
        this.context.focusSoon(placeOf(path));
    }

    show(node, path) {
        this.path = path;
        this.node = node;
        const members = node?.kind === 'object' ? node.members : [];
        const last = new Map(members.map((member) => [member.name, member.node]));
        const isSameOrder = JSON.stringify([...last.keys()]) === JSON.stringify([...this.entries.keys()]);
        if (!isSameOrder) {
            const known = this.entries;
            this.entries = new Map([...last.keys()].map((key) =>
                [key, known.get(key) ?? new MapEntry(key, this.schema, this.context)]));
            this.rows.replaceChildren(...[...this.entries.values()].map(({element}) => element));
        }
        for (const [key, entry] of this.entries) {
            entry.show(last.get(key), [...path, key]);
        }
    }
}

/// A member that is an object or a map, folded away while it is not used.
class FoldedPart {
    constructor(name, schema, context) {
        this.inner = isMap(schema) ? new MapPart(name, schema, context) : new ObjectPart(schema, context, 'group');
        this.count = make('span', {class: 'count'});
        const hint = hintOf(schema);
        this.element = make('details', {class: 'fold'},
                            make('summary', {}, make('span', {class: 'label'}, name), ' ', this.count),
                            make('div', {class: 'notes'}),
                            hint === '' ? '' : make('p', {class: 'hint'}, hint), this.inner.element);
        this.wasShown = false;
    }

    show(node, path) {
        standAt(this.element, path);
        this.element.classList.toggle('is-set', node !== undefined);
        this.count.textContent = node?.members?.length ? String(node.members.length) : '';
        if (!this.wasShown) {
            this.element.open = node !== undefined;
            this.wasShown = true;
        }
        this.inner.show(node, path);
    }
}

/// A small object of scalars, such as a position: its fields in one line.
class GroupPart {
    constructor(name, schema, context) {
        this.inner = new ObjectPart(schema, context, 'group');
        this.element = make('fieldset', {class: 'group'}, make('legend', {}, name), make('div', {class: 'notes'}),
                            this.inner.element);
    }

    show(node, path) {
        standAt(this.element, path);
        this.inner.show(node, path);
    }
}

const MOST_IN_A_GROUP = 3;

function partFor(name, schema, context, owner) {
    if (isList(schema)) {
        return new ListPart(name, schema, context);
    }
    if (isMap(schema)) {
        return new FoldedPart(name, schema, context);
    }
    if (isGroup(schema)) {
        const isSmall = Object.keys(schema.properties ?? {}).length <= MOST_IN_A_GROUP;
        return isSmall ? new GroupPart(name, schema, context) : new FoldedPart(name, schema, context);
    }
    return new FieldRow(name, schema, context, owner);
}

/// All members of an object. `owner` says what the object is: a "block", a map's "entry", or a "group" that goes when empty.
export class ObjectPart {
    constructor(schema, context, owner) {
        this.context = context;
        this.parts = new Map(Object.entries(schema.properties ?? {}).map(([name, member]) =>
            [name, partFor(name, member, context, owner)]));
        this.unknown = new Map();
        const folded = [...this.parts.values()].filter((part) => part instanceof FoldedPart);
        const plain = [...this.parts.values()].filter((part) => !(part instanceof FoldedPart));
        this.unknownRows = make('div', {class: 'unknown-rows'});
        this.element = make('div', {class: 'object'}, ...plain.map(({element}) => element),
                            ...folded.map(({element}) => element), this.unknownRows);
    }

    show(node, path) {
        for (const [name, part] of this.parts) {
            part.show(nodeAt(node, [name]), [...path, name]);
        }
        this.showUnknown(node, path);
    }

    showUnknown(node, path) {
        const names = (node?.members ?? []).map(({name}) => name).filter((name) => !this.parts.has(name));
        const known = this.unknown;
        this.unknown = new Map(names.map((name) => [name, known.get(name) ?? new UnknownRow(name, this.context)]));
        // Rows that stay are left in the page: taking them out and in again would lose the focus.
        if (JSON.stringify([...known.keys()]) !== JSON.stringify([...this.unknown.keys()])) {
            this.unknownRows.replaceChildren(...[...this.unknown.values()].map(({element}) => element));
        }
        for (const [name, row] of this.unknown) {
            row.show(nodeAt(node, [name]), [...path, name]);
        }
    }
}

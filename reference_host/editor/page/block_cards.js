// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The blocks as cards, one open or many, in the order in which they are drawn.

import {carryOver, fresh} from './block_states.js';
import {icon, iconButton, make, newId} from './elements.js';
import {nodeAt, valueOf} from './json_reader.js';
import {copyItem, insertItem, moveItem, removeItem, setValue} from './json_text.js';
import {blockOf, placeOf} from './places.js';
import {ObjectPart} from './schema_form.js';

const LIST = ['overlay'];
const NEW_BLOCK = {formatString: 'NEW', textSize: 32, position: {x: 0.4, y: 0.4}};

class Card {
    constructor(cards, index) {
        this.cards = cards;
        this.index = index;
        const bodyId = newId('block');
        this.swatch = make('span', {class: 'swatch', 'aria-hidden': 'true'}, 'A');
        this.title = make('span', {class: 'title'});
        this.badge = make('span', {class: 'badge', hidden: true});
        this.away = make('span', {class: 'away', hidden: true, title: 'Not drawn at this moment'}, 'not drawn now');
        this.toggle = make('button', {type: 'button', class: 'toggle', 'aria-expanded': 'false', 'aria-controls': bodyId,
                                      onclick: () => cards.setOpen(this.index, !this.state.isOpen)},
                           this.swatch, this.title, this.away, this.badge);
        this.hide = iconButton('shown', 'Hide for a moment', () => cards.setHidden(this.index, !this.state.isHidden),
                               {'aria-pressed': 'false'});
        this.copy = iconButton('copy', 'Copy block', () => cards.copy(this.index));
        this.up = iconButton('up', 'Move block up (drawn earlier)', () => cards.move(this.index, this.index - 1, 'up'));
        this.down = iconButton('down', 'Move block down (drawn later)', () => cards.move(this.index, this.index + 1, 'down'));
        this.remove = iconButton('remove', 'Delete block', () => cards.remove(this.index));
        this.body = make('div', {class: 'body', id: bodyId, hidden: true});
        this.notes = make('div', {class: 'notes'});
        this.element = make('article', {class: 'card', onmouseenter: () => cards.onHover(this.index),
                                        onmouseleave: () => cards.onHover(undefined)},
                            make('header', {}, this.toggle, this.hide, this.copy, this.up, this.down, this.remove),
                            this.notes, this.body);
    }

    get state() {
        return this.cards.states[this.index];
    }

    show(node, count) {
        const value = valueOf(node);
        const {isOpen, isHidden} = this.state;
        this.element.setAttribute('aria-label', `Block ${this.index + 1}`);
        this.element.dataset.place = placeOf([...LIST, this.index]);
        this.element.path = [...LIST, this.index];
        this.element.classList.toggle('is-hidden', isHidden);
        this.title.textContent = `${this.index + 1}  ${titleOf(value)}`;
        this.showSwatch(value);
        this.toggle.setAttribute('aria-expanded', String(isOpen));
        this.hide.setAttribute('aria-pressed', String(isHidden));
        this.hide.replaceChildren(icon(isHidden ? 'hidden' : 'shown'));
        this.up.disabled = this.index === 0;
        this.down.disabled = this.index === count - 1;
        this.body.hidden = !isOpen;
        if (isOpen) {
            this.showBody(node);
        }
    }

    showSwatch(value) {
        const color = (name, other) => (/^#[0-9a-fA-F]{6}$/.test(value?.[name]) ? value[name] : other);
        this.swatch.style.color = color('textColor', '#ffffff');
        this.swatch.style.background = color('bgColor', '#000000');
    }

    showBody(node) {
        if (node.kind !== 'object') {
            this.form = undefined;
            this.body.replaceChildren(make('p', {}, 'This item is no object and is skipped; mend it in the text view.'));
            return;
        }
        if (!this.form) {
            this.form = new ObjectPart(this.cards.schema, this.cards.context, 'block');
            this.body.replaceChildren(this.form.element);
        }
        this.form.show(node, [...LIST, this.index]);
    }
}

function titleOf(value) {
    const template = value?.formatString;
    if (template === undefined || template === '') {
        return '(lists all keys)';
    }
    return String(template).split('\n').map((line) => line.trim()).filter((line) => line !== '').join(' ⏎ ');
}

export class BlockCards {
    /// `context` as in schema_form.js, and in it onBlocks(states) for open and hidden cards, onHover(index).
    constructor(place, schema, context) {
        this.schema = schema;
        this.context = context;
        this.onHover = context.onHover;
        this.states = [];
        this.texts = [];
        this.cards = [];
        this.list = make('div', {class: 'cards'});
        this.empty = make('p', {class: 'empty', hidden: true}, 'No blocks yet: nothing is drawn.');
        this.broken = make('p', {class: 'broken', role: 'note', hidden: true});
        this.add = make('button', {type: 'button', class: 'add', onclick: () => this.addNew()}, icon('add'), ' Add block');
        place.replaceChildren(this.broken, this.empty, this.list, this.add);
    }

    get hiddenBlocks() {
        return this.states.flatMap(({isHidden}, index) => (isHidden ? [index] : []));
    }

    /// The root of the present text; undefined when the text cannot be read, with the reason.
    show(root, text, reason) {
        this.broken.hidden = root !== undefined;
        this.list.hidden = this.add.hidden = root === undefined;
        this.empty.hidden = true;
        if (root === undefined) {
            this.broken.textContent = `${reason} Mend the text to go on with the blocks.`;
            return;
        }
        this.root = root;
        const items = nodeAt(root, LIST)?.items ?? [];
        const texts = items.map((item) => text.slice(item.start, item.end));
        this.states = carryOver(this.texts, this.states, texts);
        this.texts = texts;
        this.empty.hidden = items.length > 0;
        while (this.cards.length < items.length) {
            this.cards.push(new Card(this, this.cards.length));
            this.list.append(this.cards.at(-1).element);
        }
        this.cards.splice(items.length).forEach((card) => card.element.remove());
        this.cards.forEach((card, index) => card.show(items[index], items.length));
    }

    /// The present values of the telemetry, or which blocks are drawn, have changed.
    showMoment(drawn) {
        this.cards.forEach((card, index) => {
            card.away.hidden = drawn.has(index) || card.state.isHidden;
        });
    }

    showCounts(findings) {
        const counts = findings.map(({place}) => blockOf(place));
        this.cards.forEach((card, index) => {
            const count = counts.filter((block) => block === index).length;
            card.badge.hidden = count === 0;
            card.badge.textContent = count === 1 ? '1 finding' : `${count} findings`;
        });
    }

    mark(index) {
        this.cards.forEach((card) => card.element.classList.toggle('is-marked', card.index === index));
    }

    setOpen(index, isOpen) {
        this.states[index].isOpen = isOpen;
        this.context.refresh();
    }

    /// Opens the card and brings it into view.
    reveal(index) {
        this.setOpen(index, true);
        this.cards[index].element.scrollIntoView({block: 'nearest'});
    }

    setHidden(index, isHidden) {
        this.states[index].isHidden = isHidden;
        this.context.refresh();
        this.context.say(isHidden ? `Block ${index + 1} is hidden here; the file keeps it.` : `Block ${index + 1} is shown.`);
    }

    addNew() {
        const list = nodeAt(this.root, LIST);
        const count = list?.items?.length ?? 0;
        this.context.change((text) => insertItem(list?.kind === 'array' ? text : setValue(text, LIST, []), LIST, count,
                                                 NEW_BLOCK));
        this.reveal(count);
        this.context.focusSoon(placeOf([...LIST, count, 'formatString']));
    }

    copy(index) {
        this.context.change((text) => copyItem(text, LIST, index));
        this.states[index + 1] = {...fresh(), isOpen: true};
        this.reveal(index + 1);
        this.cards[index + 1].toggle.focus();
        this.context.say(`Block ${index + 1} copied.`);
    }

    move(from, to, button) {
        const order = this.states.slice();
        order.splice(to, 0, ...order.splice(from, 1));
        this.context.change((text) => moveItem(text, LIST, from, to));
        this.states = order;
        this.context.refresh();
        const card = this.cards[to];
        (card[button].disabled ? card.toggle : card[button]).focus();
        card.element.scrollIntoView({block: 'nearest'});
        this.context.say(`Block ${from + 1} is now block ${to + 1}.`);
    }

    remove(index) {
        const states = this.states.toSpliced(index, 1);
        this.context.change((text) => removeItem(text, LIST, index));
        this.states = states;
        this.context.refresh();
        (this.cards[Math.min(index, this.cards.length - 1)]?.toggle ?? this.add).focus();
        this.context.say(`Block ${index + 1} deleted. Undo brings it back.`);
    }
}

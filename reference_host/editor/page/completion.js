// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A list of telemetry keys below a text area, opened by "%" or Ctrl-Space, closed by Escape. For screen
// readers the area stays a text box of many lines; the focus stays in it, aria-activedescendant names the chosen row.

import {make, newId} from './elements.js';
import {placeholderAt, placeholderFor} from './template_keys.js';

const MAX_ROWS = 200;

/// Keys that hold what was typed, those that begin with it first.
export function matching(keys, typed) {
    const wanted = typed.toLowerCase();
    const holding = keys.filter(({key}) => key.toLowerCase().includes(wanted));
    const begins = ({key}) => key.toLowerCase().startsWith(wanted);
    return [...holding.filter(begins), ...holding.filter((one) => !begins(one))].slice(0, MAX_ROWS);
}

export class Completion {
    /// `keys()` gives [{key, value}], value being the text shown beside it. `onTake()` after a key was put into the area.
    constructor(area, keys, onTake) {
        this.area = area;
        this.keys = keys;
        this.onTake = onTake;
        this.list = make('ul', {class: 'completion', role: 'listbox', 'aria-label': 'Telemetry keys', id: newId('keys'),
                                hidden: true});
        this.chosen = 0;
        area.setAttribute('aria-autocomplete', 'list');
        area.setAttribute('aria-controls', this.list.id);
        area.addEventListener('keydown', (event) => this.onKey(event));
        area.addEventListener('input', () => this.update(false));
        area.addEventListener('click', () => this.update(false));
        area.addEventListener('blur', () => this.close());
    }

    get isOpen() {
        return !this.list.hidden;
    }

    /// Opens, fills or closes the list for the place of the cursor. `isAsked`: also where no percent sign stands.
    update(isAsked) {
        const cursor = this.area.selectionStart;
        const present = placeholderAt(this.area.value, cursor);
        const place = present ?? (isAsked ? {start: cursor, end: cursor, typed: ''} : undefined);
        const rows = place && this.area.selectionEnd === cursor ? matching(this.keys(), place.typed) : [];
        // Behind a name that is complete, Enter is a new line.
        const isWhole = rows.some(({key}) => key === place.typed);
        if (rows.length === 0 || (isWhole && !isAsked)) {
            this.close();
            return;
        }
        this.place = place;
        this.show(rows);
    }

    show(rows) {
        this.rows = rows;
        this.list.replaceChildren(...rows.map(({key, value}, index) => make('li', {
            role: 'option', id: `${this.list.id}-${index}`, onmousedown: (event) => {
                event.preventDefault();
                this.take(index);
            },
        }, make('span', {class: 'key'}, key), ' ', make('span', {class: 'value'}, value))));
        this.list.hidden = false;
        this.choose(0);
    }

    choose(index) {
        this.list.children[this.chosen]?.removeAttribute('aria-selected');
        this.chosen = (index + this.rows.length) % this.rows.length;
        const row = this.list.children[this.chosen];
        row.setAttribute('aria-selected', 'true');
        row.scrollIntoView({block: 'nearest'});
        this.area.setAttribute('aria-activedescendant', row.id);
    }

    close() {
        this.list.hidden = true;
        this.area.removeAttribute('aria-activedescendant');
    }

    take(index) {
        const {start, end} = this.place;
        const written = placeholderFor(this.rows[index].key, this.area.value.slice(end));
        this.area.setRangeText(written, start, end, 'end');
        this.close();
        this.area.focus();
        this.onTake();
    }

    onKey(event) {
        if (event.key === ' ' && event.ctrlKey) {
            event.preventDefault();
            this.update(true);
            return;
        }
        const act = this.isOpen && {
            ArrowDown: () => this.choose(this.chosen + 1),
            ArrowUp: () => this.choose(this.chosen - 1),
            Enter: () => this.take(this.chosen),
            Tab: () => this.take(this.chosen),
            Escape: () => this.close(),
        }[event.key];
        if (act && !event.ctrlKey && !event.altKey && !event.shiftKey) {
            event.preventDefault();
            event.stopPropagation();
            act();
        }
    }
}

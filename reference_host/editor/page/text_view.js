// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The configuration as text, with line numbers; the line of an error is marked.

import {make} from './elements.js';
import {shownText, takeEdited} from './text_splice.js';

export class TextView {
    /// `onEdit(text)` when a person changed it.
    constructor(place, onEdit) {
        this.onEdit = onEdit;
        this.text = '';
        this.lines = 0;
        this.numbers = make('div', {class: 'numbers', 'aria-hidden': 'true'});
        this.band = make('div', {class: 'band', hidden: true});
        this.area = make('textarea', {
            spellcheck: 'false', wrap: 'off', 'aria-label': 'Configuration as text', 'aria-describedby': 'text-error',
            oninput: () => onEdit(takeEdited(this.text, this.area.value)),
            onscroll: () => this.follow(),
        });
        this.error = make('p', {id: 'text-error', class: 'text-error', role: 'status'});
        this.goTo = make('button', {type: 'button', class: 'small', hidden: true, onclick: () => this.toError()}, 'Go there');
        place.replaceChildren(make('div', {class: 'text-bar'}, this.error, this.goTo),
                              make('div', {class: 'text-view'}, this.numbers, make('div', {class: 'paper'}, this.band, this.area)));
    }

    show(text) {
        this.text = text;
        const shown = shownText(text);
        if (this.area.value !== shown) {
            this.area.value = shown;
        }
        const lines = shown.split('\n').length;
        if (lines !== this.lines) {
            this.lines = lines;
            this.numbers.replaceChildren(...Array.from({length: lines}, (_, index) => make('div', {}, String(index + 1))));
        }
        this.follow();
    }

    /// {line, column, text}, or null when the text is well.
    showError(error) {
        this.wrong = error;
        this.band.hidden = this.goTo.hidden = !error;
        this.numbers.querySelector('.is-wrong')?.classList.remove('is-wrong');
        this.error.textContent = error ? `Line ${error.line}, column ${error.column}: ${error.text}` : '';
        this.area.setAttribute('aria-invalid', String(Boolean(error)));
        if (error) {
            this.numbers.children[error.line - 1]?.classList.add('is-wrong');
        }
        this.follow();
    }

    /// Line numbers and the error's band scroll with the text.
    follow() {
        const height = parseFloat(getComputedStyle(this.area).lineHeight) || 20;
        this.numbers.style.transform = `translateY(${-this.area.scrollTop}px)`;
        if (this.wrong) {
            this.band.style.height = `${height}px`;
            this.band.style.top = `${(this.wrong.line - 1) * height - this.area.scrollTop}px`;
        }
    }

    toError() {
        const lines = this.area.value.split('\n');
        const start = lines.slice(0, this.wrong.line - 1).reduce((sum, line) => sum + line.length + 1, 0);
        const at = start + this.wrong.column - 1;
        this.area.focus();
        this.area.setSelectionRange(at, at);
        const height = parseFloat(getComputedStyle(this.area).lineHeight) || 20;
        this.area.scrollTop = Math.max(0, (this.wrong.line - 5) * height);
    }
}

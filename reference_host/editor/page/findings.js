// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the checker says of the text: at the fields concerned, and as a list. Where it names a near word, a button takes it.

import {make} from './elements.js';
import {nodeAt, readJson, valueOf} from './json_reader.js';
import {renameMember, setValue} from './json_text.js';
import {placeOf} from './places.js';
import {replaceKey} from './template_keys.js';

/// The change of the text that takes the word that a finding offers: {word, edit, path}, undefined when there is none.
/// `path` is that of the member that the finding's place names, and in the result where it stands afterwards.
export function cureOf(finding, path) {
    const word = /did you mean "(.*)"\?$/.exec(finding.text)?.[1];
    if (word === undefined || path === undefined) {
        return undefined;
    }
    const missing = /^the input never delivers "(.*)"; did/.exec(finding.text)?.[1];
    if (missing === undefined) {
        const isName = finding.text.startsWith('unknown key');
        return isName ? {word, edit: (text) => renameMember(text, path, word), path: [...path.slice(0, -1), word]}
                      : {word, edit: (text) => setValue(text, path, word), path};
    }
    switch (path[path.length - 1]) {
    case 'formatString':
        return {word, edit: (text) => setValue(text, path, replaceKey(valueOf(nodeAt(readJson(text), path)), missing, word)),
                path};
    case 'formats':
        return {word, edit: (text) => renameMember(text, [...path, missing], word), path: [...path, word]};
    default:
        return {word, edit: (text) => setValue(text, path, word), path};
    }
}

/// The element of the form for a place, or for the nearest place around it.
function elementFor(form, place) {
    for (let around = place; around !== ''; around = around.replace(/(\.[^.[]*|\[\d+\]|[^.[]+)$/, '')) {
        const found = form.querySelector(`[data-place="${CSS.escape(around)}"]`);
        if (found) {
            return {element: found, isExact: around === place};
        }
    }
    return {};
}

function titleOf(findings, error) {
    if (error) {
        return `The text cannot be read (line ${error.line})`;
    }
    return findings.length === 0 ? 'No findings' : findings.length === 1 ? '1 finding' : `${findings.length} findings`;
}

function inputIn(element) {
    return element.querySelector('input:not([type=color]), textarea, select');
}

export class Findings {
    /// `form` holds the elements with data-place; `reveal(place)` opens what is folded around a place.
    constructor(list, form, context, reveal) {
        this.list = list;
        this.form = form;
        this.context = context;
        this.reveal = reveal;
        this.shown = [];
    }

    /// `error` has the line at which the text ceases to be JSON: nothing can be said of the rest then.
    show(findings, error) {
        this.shown = findings;
        this.list.replaceChildren(make('h2', {}, titleOf(findings, error)), make('ul', {}, ...findings.map((finding) => make('li', {},
            make('button', {type: 'button', class: 'finding', onclick: () => this.goTo(finding.place)},
                 make('code', {}, finding.place), ' ', finding.text)))));
        this.place();
    }

    /// Writes the findings at their fields, again after the form has changed.
    place() {
        for (const notes of this.form.querySelectorAll('.notes')) {
            notes.replaceChildren();
            notes.parentElement.classList.remove('has-findings');
        }
        for (const input of this.form.querySelectorAll('[aria-invalid]')) {
            input.removeAttribute('aria-invalid');
        }
        for (const finding of this.shown) {
            const {element, isExact} = elementFor(this.form, finding.place);
            // A closed card only counts its findings.
            const isAbout = element !== undefined && (isExact || !element.matches('.card'));
            const notes = isAbout && element.querySelector('.notes');
            if (notes) {
                element.classList.add('has-findings');
                notes.append(this.note(finding, element, isExact));
                if (isExact && element.matches('.field')) {
                    inputIn(element)?.setAttribute('aria-invalid', 'true');
                }
            }
        }
    }

    note(finding, element, isExact) {
        const cure = isExact ? cureOf(finding, element.path) : undefined;
        return make('p', {class: 'note'}, isExact ? finding.text : `${finding.place}: ${finding.text}`, ' ',
            cure ? make('button', {type: 'button', class: 'small', onclick: () => this.take(cure)}, `Use ${cure.word}`) : '');
    }

    take(cure) {
        try {
            this.context.change(cure.edit);
            // The button goes with its finding; who pressed it goes on in the field.
            this.goTo(placeOf(cure.path));
        } catch (error) {
            this.context.say(error.message);
        }
    }

    goTo(place) {
        this.reveal(place);
        this.place();
        const {element} = elementFor(this.form, place);
        if (!element) {
            this.context.showText();
            return;
        }
        for (let around = element; around; around = around.parentElement) {
            if (around.matches('details')) {
                around.open = true;
            }
        }
        (inputIn(element) ?? element.querySelector('button'))?.focus();
        element.scrollIntoView({block: 'nearest'});
    }
}

// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The text area of a template: completes keys and shows those in use with their present values. An input as in
// scalar_inputs.js.

import {Completion} from './completion.js';
import {make} from './elements.js';
import {asJson} from './json_reader.js';
import {placeholders} from './template_keys.js';

export function templateInput(context, placeholder, onInput) {
    const area = make('textarea', {rows: '2', spellcheck: 'false', placeholder, oninput: () => {
        fit();
        onInput();
    }});
    const completion = new Completion(area, () => context.keyRows(), () => {
        fit();
        onInput();
    });
    const used = make('ul', {class: 'used', 'aria-label': 'Keys in use, with their present values'});
    const browse = make('button', {type: 'button', class: 'small', title: 'Ctrl-Space', onclick: () => {
        area.focus();
        completion.update(true);
    }}, '% keys');

    const fit = () => {
        area.rows = Math.min(Math.max(area.value.split('\n').length, 2), 12);
    };
    const showUsed = () => {
        const keys = [...new Set(placeholders(area.value).map(({key}) => key))];
        used.replaceChildren(...keys.map((key) => {
            const value = context.valueText(key);
            return make('li', {class: context.isKnownKey(key) ? undefined : 'unknown'},
                        make('span', {class: 'key'}, key), ' ', make('span', {class: 'value'}, value));
        }));
    };
    return {
        element: make('div', {class: 'template'}, area, completion.list,
                      make('div', {class: 'below'}, used, browse)),
        focus: area,
        read: () => (area.value === '' ? undefined : area.value),
        show(value) {
            area.value = value === undefined ? '' : typeof value === 'string' ? value : asJson(value);
            fit();
            showUsed();
        },
        refresh: showUsed,
    };
}

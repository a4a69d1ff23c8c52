// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Making elements in a line. Texts are always set as texts, never as markup.

/// make('button', {class: 'x', type: 'button', onclick: f, 'aria-label': 'Y'}, child, 'text'). Attributes whose value is
/// undefined or false are left out, true gives an empty one, functions become properties.
export function make(name, attributes = {}, ...children) {
    const element = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) {
        if (typeof value === 'function') {
            element[key] = value;
        } else if (value !== undefined && value !== false) {
            element.setAttribute(key, value === true ? '' : value);
        }
    }
    element.append(...children);
    return element;
}

const ICONS = {
    back: 'M6 5v14M19 5 9 12l10 7z',
    forward: 'M18 5v14M5 5l10 7-10 7z',
    play: 'M7 4v16l13-8z',
    pause: 'M8 4v16M16 4v16',
    up: 'M5 15l7-7 7 7',
    down: 'M5 9l7 7 7-7',
    copy: 'M9 9h11v11H9zM15 9V4H4v11h5',
    remove: 'M5 7h14M10 7V4h4v3M7 7l1 13h8l1-13',
    clear: 'M7 7l10 10M17 7 7 17',
    shown: 'M2 12c5-8 15-8 20 0-5 8-15 8-20 0zM12 9a3 3 0 1 0 .01 0z',
    hidden: 'M2 12c5-8 15-8 20 0-5 8-15 8-20 0zM4 20 20 4',
    add: 'M12 5v14M5 12h14',
};

/// A drawing that says nothing to a screen reader: the button around it has a label.
export function icon(name) {
    const svg = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
    svg.setAttribute('viewBox', '0 0 24 24');
    svg.setAttribute('aria-hidden', 'true');
    const path = document.createElementNS('http://www.w3.org/2000/svg', 'path');
    path.setAttribute('d', ICONS[name]);
    svg.append(path);
    return svg;
}

/// A button that is a picture, with its label for those who do not see it and as its tool tip.
export function iconButton(name, label, onclick, more = {}) {
    return make('button', {type: 'button', class: 'icon', 'aria-label': label, title: label, onclick, ...more}, icon(name));
}

let lastId = 0;

export function newId(start) {
    lastId += 1;
    return `${start}-${lastId}`;
}

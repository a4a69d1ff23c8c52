// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The file has changed on the disk since it was read, or is gone: both texts side by side, and a choice that loses neither.

import {make} from './elements.js';
import {diffLines} from './line_diff.js';

function pane(title, lines) {
    return make('section', {class: 'pane', 'aria-label': title}, make('h3', {}, title),
        make('pre', {tabindex: '0'}, ...lines.map(({line, differs}) => make(
            'span', {class: differs ? 'line differs' : 'line'}, differs ? make('span', {class: 'spoken'}, 'differs: ') : '', `${line}\n`))));
}

function scrollTogether(one, other) {
    for (const [from, to] of [[one, other], [other, one]]) {
        from.addEventListener('scroll', () => {
            to.scrollTop = from.scrollTop;
            to.scrollLeft = from.scrollLeft;
        });
    }
}

function showFirstDifference(pane) {
    const first = pane.querySelector('.differs');
    if (first) {
        pane.scrollTop = first.offsetTop - pane.offsetTop - pane.clientHeight / 3;
    }
}

/// Resolves to 'mine' (write over the file), 'theirs' (go on with the file's text) or 'neither'. `theirs` is undefined
/// when there is no file any more: then there is nothing to compare with or to take.
export function askAboutConflict(mine, theirs) {
    const isGone = theirs === undefined;
    const lines = isGone ? {mine: diffLines(mine, mine).mine, theirs: []} : diffLines(mine, theirs);
    return new Promise((resolve) => {
        const choose = (choice) => () => {
            dialog.close();
            dialog.remove();
            resolve(choice);
        };
        const dialog = make('dialog', {class: 'conflict', 'aria-labelledby': 'conflict-title', oncancel: choose('neither')},
            make('h2', {id: 'conflict-title'}, isGone ? 'The file is no longer there' : 'The file has changed on the disk'),
            make('p', {}, isGone ? 'Somebody deleted or moved it since it was read here.'
                                 : 'Somebody wrote it since it was read here. Lines that differ are marked.'),
            make('div', {class: 'panes'}, pane('Yours, in this page', lines.mine), pane('On the disk', lines.theirs)),
            make('div', {class: 'buttons'},
                make('button', {type: 'button', autofocus: true, onclick: choose('neither')}, 'Go on editing, save nothing'),
                isGone ? '' : make('button', {type: 'button', onclick: choose('theirs')}, 'Take the disk’s (undo brings yours back)'),
                make('button', {type: 'button', class: 'main', onclick: choose('mine')},
                     isGone ? 'Save mine as a new file' : 'Save mine over it')));
        document.body.append(dialog);
        dialog.showModal();
        const [left, right] = dialog.querySelectorAll('pre');
        scrollTogether(left, right);
        showFirstDifference(left);
        showFirstDifference(right);
    });
}

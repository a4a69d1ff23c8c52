// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A text area shows every line ending as a line feed. This brings what was changed there back into the text, whose other
// line endings stay as they are.

export function shownText(text) {
    return text.replace(/\r\n?/g, '\n');
}

/// Where the shown text's offset stands in the text.
function offsetIn(text, shownOffset) {
    let at = 0;
    for (let shown = 0; shown < shownOffset; shown += 1) {
        at += text.startsWith('\r\n', at) ? 2 : 1;
    }
    return at;
}

function sameStart(one, other) {
    const most = Math.min(one.length, other.length);
    let count = 0;
    while (count < most && one[count] === other[count]) {
        count += 1;
    }
    return count;
}

function sameEnd(one, other, most) {
    let count = 0;
    while (count < most && one[one.length - 1 - count] === other[other.length - 1 - count]) {
        count += 1;
    }
    return count;
}

/// The text after a text area that showed it holds `edited`.
export function takeEdited(text, edited) {
    const shown = shownText(text);
    const start = sameStart(shown, edited);
    const tail = sameEnd(shown, edited, Math.min(shown.length, edited.length) - start);
    const lineEnd = /\r\n|\n|\r/.exec(text)?.[0] ?? '\n';
    return text.slice(0, offsetIn(text, start)) +
        edited.slice(start, edited.length - tail).replaceAll('\n', lineEnd) +
        text.slice(offsetIn(text, shown.length - tail));
}

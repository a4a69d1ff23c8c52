// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Which lines of two texts differ: a longest common subsequence of lines, after equal lines at start and end are set aside.

/// Longer middles are marked whole: the table would take too much memory.
const MAX_CELLS = 4e6;

/// {mine: [{line, differs}], theirs: [...]}, all lines of both.
export function diffLines(mine, theirs) {
    const [a, b] = [mine, theirs].map((text) => text.split(/\r\n|\n|\r/));
    let start = 0;
    while (start < a.length && start < b.length && a[start] === b[start]) {
        start += 1;
    }
    let tail = 0;
    while (tail < Math.min(a.length, b.length) - start && a[a.length - 1 - tail] === b[b.length - 1 - tail]) {
        tail += 1;
    }
    const common = commonLines(a.slice(start, a.length - tail), b.slice(start, b.length - tail));
    const marked = (lines, isCommon) => lines.map((line, index) => ({
        line,
        differs: index >= start && index < lines.length - tail && !isCommon.has(index - start),
    }));
    return {mine: marked(a, common.ofA), theirs: marked(b, common.ofB)};
}

function commonLines(a, b) {
    const found = {ofA: new Set(), ofB: new Set()};
    if (a.length * b.length > MAX_CELLS) {
        return found;
    }
    const lengths = Array.from({length: a.length + 1}, () => new Uint32Array(b.length + 1));
    for (let i = a.length - 1; i >= 0; i -= 1) {
        for (let j = b.length - 1; j >= 0; j -= 1) {
            lengths[i][j] = a[i] === b[j] ? lengths[i + 1][j + 1] + 1 : Math.max(lengths[i + 1][j], lengths[i][j + 1]);
        }
    }
    for (let i = 0, j = 0; i < a.length && j < b.length;) {
        if (a[i] === b[j]) {
            found.ofA.add(i);
            found.ofB.add(j);
            i += 1;
            j += 1;
        } else if (lengths[i + 1][j] >= lengths[i][j + 1]) {
            i += 1;
        } else {
            j += 1;
        }
    }
    return found;
}

// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the page knows of each block beside the text: whether its card is open and whether it is hidden for the moment.
// It follows the blocks when they are moved, added, removed, undone or written by hand.

export const fresh = () => ({isOpen: false, isHidden: false});

/// The states for the blocks with the texts `now`, from those of the blocks with the texts `before`.
export function carryOver(before, states, now) {
    let start = 0;
    while (start < before.length && start < now.length && before[start] === now[start]) {
        start += 1;
    }
    let tail = 0;
    const most = Math.min(before.length, now.length) - start;
    while (tail < most && before[before.length - 1 - tail] === now[now.length - 1 - tail]) {
        tail += 1;
    }
    const middle = now.slice(start, now.length - tail);
    const left = before.slice(start, before.length - tail).map((text, index) => ({text, state: states[start + index]}));
    const isSameCount = middle.length === left.length;
    const taken = middle.map((text) => {
        const found = left.findIndex((one) => one?.text === text);
        return found < 0 ? undefined : left.splice(found, 1, undefined)[0].state;
    });
    // Blocks whose text changed keep their state when none came or went.
    const filled = taken.map((state, index) => state ?? (isSameCount ? left[index]?.state : undefined) ?? fresh());
    return [...states.slice(0, start), ...filled, ...states.slice(states.length - tail)];
}

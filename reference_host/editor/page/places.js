// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// How findings name a member: overlay[0].position.x for the path ['overlay', 0, 'position', 'x'].

export function placeOf(path) {
    return path.reduce((place, step) => {
        if (typeof step === 'number') {
            return `${place}[${step}]`;
        }
        return place === '' ? step : `${place}.${step}`;
    }, '');
}

/// The number of the block that a place is in, undefined when in none.
export function blockOf(place) {
    const found = /^overlay\[(\d+)\]/.exec(place);
    return found ? Number(found[1]) : undefined;
}

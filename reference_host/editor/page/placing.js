// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where a dragged block goes: whole pixels that the plugin can show, snapping, and the fractions that are written.
// Boxes are {left, top, right, bottom, anchorX, anchorY} in pixels of the picture.

/// The plugin puts blocks on even pixels, since two neighbours share their colour: the least visible step.
export const STEP_PX = 2;
/// Title safe: the middle nine tenths of the picture.
export const SAFE_MARGIN = 0.05;

/// Four digits tell neighbouring pixels apart on the largest pictures.
export function fractionOf(pixels, length) {
    return Math.round((Math.min(Math.max(pixels, 0), length) / length) * 1e4) / 1e4;
}

/// The position that puts the box's upper left corner at (left, top); places outside become the nearest inside.
export function positionAt(box, left, top, picture) {
    return {
        x: fractionOf(left + box.anchorX - box.left, picture.width),
        y: fractionOf(top + box.anchorY - box.top, picture.height),
    };
}

/// Lines of one axis that edges or middles of boxes are drawn to.
function linesOf(axis, others) {
    const {length, begin, end} = axis;
    const margin = Math.round(length * SAFE_MARGIN);
    const own = [0, margin, length / 2, length - margin, length];
    return [...own, ...others.flatMap((box) => [box[begin], (box[begin] + box[end]) / 2, box[end]])];
}

/// The least move of one axis within `reach` that brings an edge or the middle onto a line: {by, line}, or undefined.
function snapAxis(axis, start, size, others, reach) {
    let best;
    for (const line of linesOf(axis, others)) {
        for (const part of [start, start + size / 2, start + size]) {
            const by = line - part;
            if (Math.abs(by) <= reach && (best === undefined || Math.abs(by) < Math.abs(best.by))) {
                best = {by, line};
            }
        }
    }
    return best;
}

/// {left, top, lineX, lineY}: the corner after snapping, and the lines that took hold (undefined for none).
export function snap(box, left, top, others, picture, reach) {
    const x = snapAxis({length: picture.width, begin: 'left', end: 'right'}, left, box.right - box.left, others, reach);
    const y = snapAxis({length: picture.height, begin: 'top', end: 'bottom'}, top, box.bottom - box.top, others, reach);
    return {left: left + (x?.by ?? 0), top: top + (y?.by ?? 0), lineX: x?.line, lineY: y?.line};
}

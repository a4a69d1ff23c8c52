// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Rows for the page's small modules: templates, placing, the text area's line ends, line differences, card states,
// history, bitmaps.

import {readBitmap} from '/page/bitmap.js';
import {carryOver} from '/page/block_states.js';
import {History} from '/page/history.js';
import {Latest} from '/page/latest.js';
import {diffLines} from '/page/line_diff.js';
import {blockOf, placeOf} from '/page/places.js';
import {fractionOf, positionAt, snap} from '/page/placing.js';
import {placeholderAt, placeholderFor, placeholders, replaceKey} from '/page/template_keys.js';
import {shownText, takeEdited} from '/page/text_splice.js';
import {expectSame} from '/tests/test_rows.js';

function templateRows(rows) {
    const keysIn = (text) => placeholders(text).map(({key}) => key);
    for (const [text, keys] of [
        ['HDG %{heading_deg}°  (%sensor_lat_deg,%sensor_lon_deg)', ['heading_deg', 'sensor_lat_deg', 'sensor_lon_deg']],
        ['%pan_deg%tilt_deg', ['pan_deg%tilt_deg']],
        ['%% 80 % of 100%', []],
        ['%a %{never closed', ['a']],
        ['%{a b}%{}', ['a b', '']],
        ['%a.b-c°\n%d\t%%e', ['a.b-c°', 'd']],
    ]) {
        rows.row(`keys of ${text}`, () => expectSame(keysIn(text), keys));
    }
    // The cursor stands at the bar.
    for (const [text, expected] of [
        ['ALT %sen|', {start: 4, end: 8, typed: 'sen'}],
        ['%|', {start: 0, end: 1, typed: ''}],
        ['%{sen|sor_alt_m} m', {start: 0, end: 15, typed: 'sen'}],
        ['%{sen| m', {start: 0, end: 5, typed: 'sen'}],
        ['%{a}|', undefined],
        ['100%%|', undefined],
        ['%a |b', undefined],
        ['%a %b|', {start: 3, end: 5, typed: 'b'}],
        ['%{| %{b}', {start: 0, end: 2, typed: ''}],
    ]) {
        rows.row(`at the cursor of ${text}`, () =>
            expectSame(placeholderAt(text.replace('|', ''), text.indexOf('|')), expected));
    }
    for (const [key, following, expected] of [
        ['a_b', '', '%a_b'], ['a_b', ' m', '%a_b'], ['a_b', '°', '%{a_b}'], ['a b', '', '%{a b}'], ['a_b', '\n', '%a_b'],
    ]) {
        rows.row(`placeholder ${key} before ${following}`, () => expectSame(placeholderFor(key, following), expected));
    }
    rows.row('another key everywhere', () =>
        expectSame(replaceKey('%hd and %{hd}° not %hdg', 'hd', 'heading_deg'), '%heading_deg and %{heading_deg}° not %hdg'));
}

const BOX = {left: 95, top: 45, right: 305, bottom: 105, anchorX: 100, anchorY: 50};
const PICTURE = {width: 1920, height: 1080};

function placingRows(rows) {
    rows.row('fractions have four digits', () => expectSame(fractionOf(858, 1920), 0.4469));
    rows.row('fractions stay inside', () => expectSame([fractionOf(-4, 10), fractionOf(14, 10)], [0, 1]));
    rows.row('every even pixel of large pictures is reached', () => {
        for (const length of [640, 1280, 1920, 3840, 4096]) {
            for (let pixel = 0; pixel < length; pixel += 2) {
                // What the plugin makes of the fraction: cut to whole pixels, then the next even one.
                const cut = Math.trunc(Math.fround(length * Math.fround(fractionOf(pixel, length))));
                expectSame(cut + (cut % 2), pixel, `of ${length}`);
            }
        }
    });
    rows.row('the text stands inside of its box', () => expectSame(positionAt(BOX, 955, 535, PICTURE), {x: 0.5, y: 0.5}));
    for (const [name, left, top, others, expected] of [
        ['to the middle', 858, 100, [], {left: 855, top: 100, lineX: 960}],
        ['to the safe margin', 90, 52, [], {left: 96, top: 54, lineX: 96, lineY: 54}],
        ['to the right edge', 1713, 300, [], {left: 1710, top: 300, lineX: 1920}],
        ['to another box', 500, 300, [{left: 503, right: 600, top: 700, bottom: 800}], {left: 503, top: 300, lineX: 503}],
        ['nowhere', 500, 300, [], {left: 500, top: 300}],
    ]) {
        rows.row(`snaps ${name}`, () => expectSame(snap(BOX, left, top, others, PICTURE, 8), expected));
    }
}

function textRows(rows) {
    rows.row('a text area shows line feeds', () => expectSame(shownText('a\r\nb\rc\nd'), 'a\nb\nc\nd'));
    for (const [name, text, edited, expected] of [
        ['a letter', 'a\r\nb\r\nc', 'a\nbx\nc', 'a\r\nbx\r\nc'],
        ['a line', 'a\r\nb', 'a\nnew\nb', 'a\r\nnew\r\nb'],
        ['a line less', 'a\r\nb\r\nc\n', 'a\nc\n', 'a\r\nc\n'],
        ['mixed line ends', 'a\nb\r\nc', 'a\nb\nc!', 'a\nb\r\nc!'],
        ['nothing', 'a\r\nb', 'a\nb', 'a\r\nb'],
        ['all', 'a\r\nb', '', ''],
    ]) {
        rows.row(`takes ${name}`, () => expectSame(takeEdited(text, edited), expected));
    }
    rows.row('differing lines', () => {
        const differing = ({mine, theirs}) => [mine, theirs].map((lines) => lines.filter(({differs}) => differs).map(({line}) => line));
        expectSame(differing(diffLines('a\nb\nc\nd', 'a\nc\nx\nd')), [['b'], ['x']]);
        expectSame(differing(diffLines('a\r\nb', 'a\nb')), [[], []]);
    });
    rows.row('places', () => expectSame(
        [placeOf(['overlay', 0, 'formats', 'a.b', 'date']), blockOf('overlay[12].x'), blockOf('overlays') ?? null],
        ['overlay[0].formats.a.b.date', 12, null]));
}

function stateRows(rows) {
    const states = (text) => [...text].map((name) => ({name}));
    const names = (before, now) => carryOver([...before], states(before), [...now]).map(({name}) => name ?? 'new').join('');
    for (const [before, now, expected] of [
        ['abc', 'abc', 'abc'], ['abc', 'aBc', 'abc'], ['abc', 'ac', 'ac'], ['abc', 'abxc', 'abnewc'], ['abc', 'bac', 'bac'],
        ['', 'ab', 'newnew'], ['ab', '', ''],
    ]) {
        rows.row(`cards from ${before} to ${now}`, () => expectSame(names(before, now), expected));
    }
}

function historyRows(rows) {
    rows.row('undo and redo', () => {
        const history = new History('a', () => {});
        history.change('b');
        history.change('c');
        history.undo();
        expectSame([history.text, history.isDirty], ['b', true]);
        history.undo();
        history.undo();
        expectSame([history.text, history.isDirty], ['a', false]);
        history.redo();
        history.redo();
        expectSame(history.text, 'c');
        history.undo();
        history.change('d');
        history.redo();
        expectSame(history.text, 'd');
    });
    rows.row('one step for what belongs together', () => {
        const history = new History('a', () => {});
        history.change('b', 'field', Infinity);
        history.change('c', 'field', Infinity);
        history.change('d', 'other');
        history.undo();
        expectSame(history.text, 'c');
        history.undo();
        expectSame(history.text, 'a');
    });
}

/// A bitmap of 24 bits with these bytes as rows, which are filled up to a multiple of four.
function bitmapOf(width, height, rows) {
    const header = new DataView(new ArrayBuffer(54));
    header.setUint32(10, 54, true);
    header.setInt32(18, width, true);
    header.setInt32(22, height, true);
    header.setUint16(28, 24, true);
    // An odd place in memory, as behind a line of JSON.
    return Uint8Array.from([7, ...new Uint8Array(header.buffer), ...rows]).subarray(1);
}

function bitmapRows(rows) {
    const [lower, upper] = [[1, 2, 3, 0], [4, 5, 255, 0]];
    const pixels = (image) => [image.width, image.height, [...image.data]];
    rows.row('a bitmap from the lowest row', () => expectSame(
        pixels(readBitmap(bitmapOf(1, 2, [...lower, ...upper]))), [1, 2, [255, 5, 4, 255, 3, 2, 1, 255]]));
    rows.row('a bitmap from the top', () => expectSame(
        pixels(readBitmap(bitmapOf(1, -2, [...lower, ...upper]))), [1, 2, [3, 2, 1, 255, 255, 5, 4, 255]]));
}

export async function latestRows(rows) {
    const seen = [];
    let most = 0;
    let running = 0;
    const latest = new Latest(async (wanted) => {
        running += 1;
        most = Math.max(most, running);
        await new Promise((done) => {
            setTimeout(done, 1);
        });
        seen.push(wanted);
        running -= 1;
    });
    [1, 2, 3, 4].forEach((wanted) => latest.want(wanted));
    while (latest.isRunning) {
        await new Promise((done) => {
            setTimeout(done, 1);
        });
    }
    rows.row('one at a time, the newest next', () => expectSame([seen, most], [[1, 4], 1]));

    const failing = new Latest(() => Promise.reject(new Error('failed')));
    failing.next = {wanted: 1};
    await failing.drain().catch(() => {});
    rows.row('a run that throws is no run that goes on', () => expectSame(failing.isRunning, false));
}

export function moduleRows(rows) {
    templateRows(rows);
    placingRows(rows);
    textRows(rows);
    stateRows(rows);
    historyRows(rows);
    bitmapRows(rows);
}

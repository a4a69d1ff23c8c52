// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Placeholders in a template, "%name" and "%{any name}", as the plugin reads them.

/// A bare name ends before one of these.
const ENDS = ' \t\r\n"\'(),/:;<>[\\]{}';

/// [{key, start, end}] with start at the percent sign; "%%" is a percent sign.
export function placeholders(template) {
    const found = [];
    for (let at = template.indexOf('%'); at >= 0; at = template.indexOf('%', at)) {
        if (template[at + 1] === '{') {
            const close = template.indexOf('}', at);
            if (close < 0) {
                break;
            }
            found.push({key: template.slice(at + 2, close), start: at, end: close + 1});
            at = close + 1;
        } else if (template[at + 1] === '%') {
            at += 2;
        } else {
            const end = endOfName(template, at + 1);
            if (end > at + 1) {
                found.push({key: template.slice(at + 1, end), start: at, end});
            }
            at = end;
        }
    }
    return found;
}

function endOfName(template, start) {
    let end = start;
    while (end < template.length && !ENDS.includes(template[end])) {
        end += 1;
    }
    return end;
}

/// The placeholder that is being written at the cursor: {start, end, typed}; undefined when there is none. `end` is where
/// what the choice replaces ends: behind the rest of the name and its closing brace.
export function placeholderAt(template, cursor) {
    for (let at = template.indexOf('%'); at >= 0 && at < cursor; at = template.indexOf('%', at)) {
        const isBraced = template[at + 1] === '{';
        if (!isBraced && template[at + 1] === '%') {
            at += 2;
            continue;
        }
        const nameStart = at + (isBraced ? 2 : 1);
        const end = isBraced ? endOfBraced(template, nameStart) : endOfName(template, nameStart);
        if (cursor >= nameStart && (isBraced ? cursor < end || template[end - 1] !== '}' : cursor <= end)) {
            return {start: at, end, typed: template.slice(nameStart, cursor)};
        }
        at = Math.max(end, at + 1);
    }
    return undefined;
}

/// Behind the closing brace of this line; without one at the end of the name.
function endOfBraced(template, start) {
    const close = template.slice(start).search(/[}%\n]/);
    return close >= 0 && template[start + close] === '}' ? start + close + 1 : endOfName(template, start);
}

/// A placeholder for the key in front of `following`: with braces only where the name would not end by itself.
export function placeholderFor(key, following) {
    const needsBraces = [...key].some((letter) => ENDS.includes(letter)) || key.startsWith('%') ||
        (following !== '' && !ENDS.includes(following[0]));
    return needsBraces ? `%{${key}}` : `%${key}`;
}

/// The template with every placeholder of one key changed to another.
export function replaceKey(template, key, other) {
    return placeholders(template).filter((one) => one.key === key).reduceRight(
        (text, {start, end}) => text.slice(0, start) + placeholderFor(other, text.slice(end)) + text.slice(end), template);
}

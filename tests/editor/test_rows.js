// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Rows of tests for the page's modules, run in the browser: each row is a name and a function that throws.

export class Rows {
    constructor() {
        this.failures = [];
        this.count = 0;
    }

    row(name, check) {
        this.count += 1;
        try {
            check();
        } catch (error) {
            this.failures.push(`${name}: ${error.message}`);
        }
    }
}

export function expectSame(actual, expected, what = '') {
    const [is, should] = [actual, expected].map((value) => JSON.stringify(value));
    if (is !== should) {
        throw new Error(`${what}\n      is ${is}\n  not ${should}`);
    }
}

export function expectThrow(act, pattern) {
    try {
        act();
    } catch (error) {
        if (pattern.test(error.message)) {
            return;
        }
        throw new Error(`threw ${error.message}, not ${pattern}`);
    }
    throw new Error(`did not throw ${pattern}`);
}

// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the page asks of the program that serves it.

import {readBitmap} from './bitmap.js';

/// A refusal: the program's own line, its HTTP status, and what else it told.
export class StoreError extends Error {
    constructor(status, answer) {
        super(answer.error);
        this.status = status;
        this.answer = answer;
    }
}

async function ask(path, method = 'GET', body = undefined) {
    let response;
    try {
        response = await fetch(path, {
            method,
            headers: body === undefined ? {} : {'Content-Type': 'application/json'},
            body: body === undefined ? undefined : JSON.stringify(body),
        });
    } catch {
        throw new StoreError(0, {error: 'the program does not answer any more; what you wrote is still in this page'});
    }
    if (!response.ok) {
        const answer = await response.json().catch(() => ({}));
        throw new StoreError(response.status, {error: `the program refuses (${response.status})`, ...answer});
    }
    return response;
}

async function askJson(path, method, body) {
    return (await ask(path, method, body)).json();
}

export const store = {
    clip: () => askJson('/api/clip'),
    schema: () => askJson('/api/schema'),
    keys: () => askJson('/api/keys'),
    config: () => askJson('/api/config'),
    check: (text) => askJson('/api/check', 'POST', {text}),

    /// {etag} of what was written. When the file has changed since `etag`: StoreError 412, whose answer has the text and
    /// etag of the file.
    save: (text, etag) => askJson('/api/config', 'PUT', {text, etag}),

    /// {facts, image}: one line of JSON, then the picture.
    async preview(request) {
        const bytes = new Uint8Array(await (await ask('/api/preview', 'POST', request)).arrayBuffer());
        const end = bytes.indexOf(10);
        const facts = JSON.parse(new TextDecoder().decode(bytes.subarray(0, end)));
        return {facts, image: readBitmap(bytes.subarray(end + 1))};
    },
};

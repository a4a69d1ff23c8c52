// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The text of the configuration with all its earlier and undone forms.

const MAX_STEPS = 1000;

export class History {
    /// `onChange()` is called after every change of the text, of what is saved, undo and redo.
    constructor(text, onChange) {
        this.text = text;
        this.saved = text;
        this.past = [];
        this.future = [];
        this.onChange = onChange;
        this.merge = {key: undefined, until: 0};
    }

    get isDirty() {
        return this.text !== this.saved;
    }

    /// Changes with the same key that follow each other within `withinMs` are one step of undo.
    change(text, key = undefined, withinMs = 1500) {
        if (text === this.text) {
            return;
        }
        const isSameStep = key !== undefined && key === this.merge.key && performance.now() < this.merge.until;
        if (!isSameStep) {
            this.past.push(this.text);
            this.past.splice(0, this.past.length - MAX_STEPS);
        }
        this.merge = {key, until: performance.now() + withinMs};
        this.future = [];
        this.text = text;
        this.onChange();
    }

    undo() {
        this.step(this.past, this.future);
    }

    redo() {
        this.step(this.future, this.past);
    }

    step(from, to) {
        if (from.length > 0) {
            to.push(this.text);
            this.text = from.pop();
            this.merge = {key: undefined, until: 0};
            this.onChange();
        }
    }

    markSaved(text) {
        this.saved = text;
        this.merge = {key: undefined, until: 0};
        this.onChange();
    }
}

// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One thing at a time, and always the newest: what is wanted while one run goes on replaces what was wanted before.

export class Latest {
    /// `run(wanted)` is a promise; it tells its own failures.
    constructor(run) {
        this.run = run;
        this.isRunning = false;
        this.next = undefined;
    }

    want(wanted) {
        this.next = {wanted};
        if (!this.isRunning) {
            this.drain();
        }
    }

    async drain() {
        this.isRunning = true;
        try {
            while (this.next) {
                const {wanted} = this.next;
                this.next = undefined;
                await this.run(wanted);
            }
        } finally {
            this.isRunning = false;
        }
    }
}

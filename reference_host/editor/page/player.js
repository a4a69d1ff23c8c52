// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The picture: asks for it whenever the text, the time or what is hidden changes, and plays.

import {Latest} from './latest.js';

const PLAY_EVERY_MS = 100;

export class Player {
    /// `request()` gives {text, hidden} of now; `onShown(facts)` after a picture, `onFailure(message)` without one.
    constructor(store, canvas, request, onShown, onFailure) {
        this.store = store;
        this.canvas = canvas;
        this.request = request;
        this.onShown = onShown;
        this.onFailure = onFailure;
        this.facts = undefined;
        this.place = {seconds: 0};
        this.isPlaying = false;
        this.latest = new Latest((place) => this.fetch(place));
    }

    /// {frame: n}, {seconds: s} or {step: 1, from: n}.
    goTo(place) {
        this.place = place;
        this.latest.want(place);
    }

    /// The same moment again, or the one that was asked for last, with the text of now.
    renew() {
        if (!this.isPlaying) {
            this.goTo(this.place);
        }
    }

    step(by) {
        this.stop();
        // Steps that come faster than pictures add up.
        const from = this.aimed ?? this.facts?.frame;
        if (from !== undefined) {
            this.aimed = Math.max(1, from + by);
            this.goTo(this.aimed === from + by ? {step: by, from} : {frame: 1});
        }
    }

    async fetch(place) {
        try {
            const {facts, image} = await this.store.preview({...this.request(), ...place});
            this.draw(facts, image);
        } catch (error) {
            this.stop();
            this.onFailure(error.message);
        }
    }

    draw(facts, image) {
        const {canvas} = this;
        if (canvas.width !== facts.width || canvas.height !== facts.height) {
            [canvas.width, canvas.height] = [facts.width, facts.height];
        }
        canvas.getContext('2d').putImageData(image, 0, 0);
        this.facts = facts;
        if (!this.latest.next) {
            this.place = {frame: facts.frame};
            this.aimed = undefined;
        }
        this.onShown(facts);
        if (this.isPlaying) {
            this.playOn();
        }
    }

    play() {
        const isAtEnd = this.facts?.last && this.place.seconds === undefined;
        const start = isAtEnd ? 0 : this.place.seconds ?? this.facts?.seconds ?? 0;
        this.isPlaying = true;
        this.started = {seconds: start, at: performance.now()};
        this.goTo({seconds: start});
    }

    /// The next picture, where the clock is by then, but not more often than ten times a second.
    playOn() {
        clearTimeout(this.timer);
        if (this.facts.last) {
            this.stop();
            return;
        }
        const now = performance.now();
        const wait = Math.max(0, (this.nextAt ?? 0) - now);
        this.nextAt = Math.max(now, this.nextAt ?? 0) + PLAY_EVERY_MS;
        this.timer = setTimeout(() => this.goTo(
            {seconds: this.started.seconds + (performance.now() - this.started.at) / 1000}), wait);
    }

    stop() {
        clearTimeout(this.timer);
        if (this.isPlaying) {
            this.isPlaying = false;
            if (this.facts) {
                this.onShown(this.facts);
            }
        }
    }
}

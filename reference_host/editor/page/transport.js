// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Slider, step and play buttons of the player.

import {icon} from './elements.js';

function timeText(seconds) {
    const whole = Math.floor(seconds);
    const rest = (seconds - whole).toFixed(2).slice(1);
    const two = (number) => String(number).padStart(2, '0');
    return `${two(Math.floor(whole / 60))}:${two(whole % 60)}${rest}`;
}

/// The slider's end until the clip's is known.
const UNKNOWN_SECONDS = 600;

export class Transport {
    constructor(player, clip, find) {
        this.player = player;
        this.clip = clip;
        this.slider = find('#time');
        this.output = find('#time-text');
        this.playButton = find('#play');
        this.slider.max = String(clip.seconds ?? UNKNOWN_SECONDS);
        this.slider.step = String(clip.frameSeconds || 0.04);
        this.slider.addEventListener('input', () => {
            player.stop();
            player.goTo({seconds: Number(this.slider.value)});
        });
        this.slider.addEventListener('pointerdown', () => {
            this.isHeld = true;
        });
        for (const event of ['pointerup', 'pointercancel', 'blur']) {
            this.slider.addEventListener(event, () => {
                this.isHeld = false;
            });
        }
        this.label(find('#back'), 'back', 'One frame back', () => player.step(-1));
        this.label(find('#forward'), 'forward', 'One frame on', () => player.step(1));
        this.label(this.playButton, 'play', 'Play', () => this.playOrStop());
    }

    label(button, drawing, text, onclick) {
        button.append(icon(drawing));
        button.setAttribute('aria-label', text);
        button.addEventListener('click', onclick);
    }

    playOrStop() {
        if (this.player.isPlaying) {
            this.player.stop();
        } else {
            this.player.play();
        }
    }

    show(facts) {
        if (facts.last || facts.seconds > Number(this.slider.max)) {
            this.slider.max = String(facts.seconds);
        }
        if (facts.last) {
            this.clip.frames = facts.frame;
        }
        if (!this.isHeld) {
            this.slider.value = String(facts.seconds);
        }
        const frames = this.clip.frames ? ` of ${this.clip.frames}` : '';
        this.output.textContent = `${timeText(facts.seconds)}  frame ${facts.frame}${frames}`;
        this.slider.setAttribute('aria-valuetext', `${facts.seconds.toFixed(2)} seconds, frame ${facts.frame}${frames}`);
        const {isPlaying} = this.player;
        if (this.wasPlaying !== isPlaying) {
            this.wasPlaying = isPlaying;
            this.playButton.replaceChildren(icon(isPlaying ? 'pause' : 'play'));
            this.playButton.setAttribute('aria-label', isPlaying ? 'Pause' : 'Play');
        }
    }
}

// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The blocks' outlines over the picture: hover shows them, dragging and arrow keys move the block under them.

import {make} from './elements.js';
import {fractionOf, positionAt, snap, STEP_PX} from './placing.js';

/// How near on the screen a line takes hold.
const SNAP_REACH_SCREEN_PX = 7;
/// Shorter moves are clicks.
const DRAG_START_SCREEN_PX = 3;

const KEYS = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]};

export class PictureLayer {
    /// `act` has setPosition(block, {x, y}, step): step tells which changes are one step of undo; open(block),
    /// hover(block), titleOf(block), isSnapping().
    constructor(layer, act) {
        this.layer = layer;
        this.act = act;
        this.boxes = [];
        this.picture = {width: 16, height: 9};
        this.outlines = new Map();
        this.guides = [make('div', {class: 'guide vertical', hidden: true}), make('div', {class: 'guide horizontal', hidden: true})];
        layer.append(...this.guides);
    }

    /// The boxes of the picture that is shown now.
    show(boxes, picture) {
        this.boxes = boxes;
        this.picture = picture;
        const present = new Set(boxes.map(({block}) => block));
        for (const [block, outline] of this.outlines) {
            // What has the focus or is being dragged stays until it is let go.
            if (!present.has(block) && this.drag?.block !== block && outline !== document.activeElement) {
                outline.remove();
                this.outlines.delete(block);
            }
        }
        for (const box of boxes) {
            this.placeOutline(this.outlineOf(box.block), this.drag?.block === box.block ? this.drag.box : box);
        }
    }

    outlineOf(block) {
        if (!this.outlines.has(block)) {
            const outline = make('button', {
                type: 'button', class: 'outline', 'aria-keyshortcuts': 'ArrowLeft ArrowRight ArrowUp ArrowDown Enter',
                onpointerdown: (event) => this.start(event, block),
                onpointermove: (event) => this.move(event),
                onpointerup: () => this.end(),
                onlostpointercapture: () => this.end(),
                onkeydown: (event) => this.onKey(event, block),
                onclick: (event) => this.onClick(event, block),
                onmouseenter: () => this.act.hover(block),
                onmouseleave: () => this.act.hover(undefined),
            });
            this.outlines.set(block, outline);
            this.layer.append(outline);
        }
        return this.outlines.get(block);
    }

    placeOutline(outline, box) {
        const {width, height} = this.picture;
        const percent = (part, whole) => `${(part / whole) * 100}%`;
        outline.style.left = percent(box.left, width);
        outline.style.top = percent(box.top, height);
        outline.style.width = percent(box.right - box.left, width);
        outline.style.height = percent(box.bottom - box.top, height);
        outline.style.zIndex = String(box.block + 1);
        const {x, y} = {x: fractionOf(box.anchorX, width), y: fractionOf(box.anchorY, height)};
        outline.setAttribute('aria-label', `Block ${box.block + 1}, ${this.act.titleOf(box.block)}, at ${x}, ${y}`);
    }

    mark(block) {
        for (const [index, outline] of this.outlines) {
            outline.classList.toggle('is-marked', index === block);
        }
    }

    boxOf(block) {
        return this.boxes.find((box) => box.block === block);
    }

    /// Pixels of the picture for one on the screen.
    scale() {
        return this.picture.width / this.layer.getBoundingClientRect().width;
    }

    start(event, block) {
        if (event.button !== 0 || !this.boxOf(block)) {
            return;
        }
        event.currentTarget.setPointerCapture(event.pointerId);
        this.wasDragged = false;
        this.drag = {block, startX: event.clientX, startY: event.clientY, box: this.boxOf(block), first: this.boxOf(block),
                     hasMoved: false, step: `drag ${event.timeStamp}`};
    }

    move(event) {
        const {drag} = this;
        if (!drag) {
            return;
        }
        // The button was let go where nobody told the page.
        if (event.buttons === 0) {
            this.end();
            return;
        }
        const [byX, byY] = [event.clientX - drag.startX, event.clientY - drag.startY];
        drag.hasMoved ||= Math.hypot(byX, byY) >= DRAG_START_SCREEN_PX;
        if (!drag.hasMoved) {
            return;
        }
        const scale = this.scale();
        const reach = this.act.isSnapping() && !event.altKey ? SNAP_REACH_SCREEN_PX * scale : -1;
        const others = this.boxes.filter(({block}) => block !== drag.block);
        const place = snap(drag.first, drag.first.left + byX * scale, drag.first.top + byY * scale, others, this.picture, reach);
        this.showGuides(place);
        this.moveTo(drag, place.left, place.top);
    }

    moveTo(drag, left, top) {
        const {first} = drag;
        const shift = (x, y) => ({...first, left: first.left + x, right: first.right + x, top: first.top + y,
                                  bottom: first.bottom + y, anchorX: first.anchorX + x, anchorY: first.anchorY + y});
        drag.box = shift(left - first.left, top - first.top);
        this.placeOutline(this.outlineOf(drag.block), drag.box);
        this.act.setPosition(drag.block, positionAt(first, left, top, this.picture), drag.step);
    }

    end() {
        if (!this.drag) {
            return;
        }
        // The click that follows a drag opens nothing.
        this.wasDragged = this.drag.hasMoved;
        this.drag = undefined;
        this.showGuides({});
    }

    onClick(event, block) {
        const isByKey = event.detail === 0;
        if (isByKey || !this.wasDragged) {
            this.act.open(block);
        }
        this.wasDragged = false;
    }

    showGuides({lineX, lineY}) {
        const [vertical, horizontal] = this.guides;
        vertical.hidden = lineX === undefined;
        horizontal.hidden = lineY === undefined;
        vertical.style.left = `${((lineX ?? 0) / this.picture.width) * 100}%`;
        horizontal.style.top = `${((lineY ?? 0) / this.picture.height) * 100}%`;
    }

    /// Several key presses may come before the next picture: each goes on from where the last one put the block.
    onKey(event, block) {
        const direction = KEYS[event.key];
        const box = this.boxOf(block);
        if (!direction || !box || event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        event.preventDefault();
        const step = STEP_PX * (event.shiftKey ? 10 : 1);
        const drag = {block, first: box};
        this.moveTo(drag, box.left + direction[0] * step, box.top + direction[1] * step);
        Object.assign(box, drag.box);
    }
}

// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Puts the page together. The configuration's text, in the history, is the one state; everything else shows it.

import {BlockCards} from './block_cards.js';
import {askAboutConflict} from './conflict_dialog.js';
import {make} from './elements.js';
import {Findings} from './findings.js';
import {History} from './history.js';
import {readJson} from './json_reader.js';
import {setValue} from './json_text.js';
import {Latest} from './latest.js';
import {PictureLayer} from './picture_layer.js';
import {blockOf} from './places.js';
import {Player} from './player.js';
import {setUpSwitch, setUpTheme} from './settings.js';
import {store} from './store.js';
import {setUpTabs} from './tabs.js';
import {TextView} from './text_view.js';
import {Transport} from './transport.js';

const find = (selector) => document.querySelector(selector);

/// What an alert can be about, the worst first.
const TROUBLES = ['saving', 'picture', 'checking'];

class Editor {
    constructor({clip, schema, keys, config}) {
        this.clip = clip;
        this.config = config;
        this.delivered = keys.keys;
        this.derivable = keys.derivable;
        this.known = new Set([...keys.keys, ...keys.derivable]);
        this.values = {};
        this.troubles = {};
        this.history = new History(config.text, () => this.onText());
        this.setUpPicture();
        this.setUpForm(schema);
        this.setUpButtons();
        this.checker = new Latest((text) => this.check(text));
        find('#clip-name').textContent = clip.name;
        find('#config-name').textContent = config.path;
        this.findings.show(config.findings ?? [], read(config.text).error ?? config.error);
        this.onText();
        if (this.cards.cards.length > 0 && this.cards.cards.length <= 2) {
            this.cards.setOpen(0, true);
        }
    }

    setUpPicture() {
        this.player = new Player(store, find('#picture'),
            () => ({text: this.history.text, hidden: this.cards.hiddenBlocks}),
            (facts) => this.onPicture(facts), (message) => this.alert('picture', `No picture: ${message}`));
        this.transport = new Transport(this.player, this.clip, find);
        this.layer = new PictureLayer(find('#layer'), {
            setPosition: (block, place, step) => this.setPosition(block, place, step),
            open: (block) => this.openBlock(block),
            hover: (block) => this.hover(block),
            titleOf: (block) => this.cards.cards[block]?.title.textContent ?? '',
            isSnapping: () => find('#snap').checked,
        });
        setUpSwitch(find('#show-grid'), (isOn) => {
            find('#grid').hidden = !isOn;
        });
        setUpSwitch(find('#show-safe'), (isOn) => {
            find('#safe').hidden = !isOn;
        });
        setUpSwitch(find('#show-boxes'), (isOn) => find('#layer').classList.toggle('shows-all', isOn));
        setUpSwitch(find('#snap'), () => {});
        setUpTheme(find('#theme'));
    }

    setUpForm(schema) {
        const context = {
            change: (edit) => this.history.change(edit(this.history.text)),
            changeField: (edit, place) => this.changeField(edit, place),
            leaveField: () => {
                this.typing = undefined;
            },
            refresh: () => this.onText(),
            say: (text) => this.say(text),
            focusSoon: (place) => this.focusPlace(place),
            showText: () => this.showText(),
            onHover: (block) => this.hover(block),
            isKnownKey: (key) => this.known.has(key),
            valueText: (key) => this.valueText(key),
            keyRows: () => [...this.delivered, ...this.derivable.filter((key) => !this.delivered.includes(key))].map(
                (key) => ({key, value: this.valueText(key)})),
        };
        const form = find('#blocks-panel');
        this.cards = new BlockCards(form, schema.properties.overlay.items, context);
        this.findings = new Findings(find('#findings'), form, context, (place) => this.revealPlace(place));
        this.textView = new TextView(find('#text-panel'), (text) => this.history.change(text, 'text'));
        const tabs = [find('#blocks-tab'), find('#text-tab')];
        this.chooseTab = setUpTabs(tabs, () => this.textView.follow());
        find('#keys').replaceChildren(...context.keyRows().map(({key}) => make('option', {value: key})));
    }

    setUpButtons() {
        find('#undo').addEventListener('click', () => this.history.undo());
        find('#redo').addEventListener('click', () => this.history.redo());
        find('#save').addEventListener('click', () => this.save());
        document.addEventListener('keydown', (event) => this.onKey(event));
        window.addEventListener('beforeunload', (event) => {
            if (this.history.isDirty) {
                event.preventDefault();
            }
        });
    }

    /// A field being typed into starts from the text before the first letter every time: a member that is cleared and
    /// written anew keeps its place.
    changeField(edit, place) {
        const goesOn = this.typing?.place === place && this.typing.after === this.history.text;
        const before = goesOn ? this.typing.before : this.history.text;
        const after = edit(before);
        this.typing = {place, before, after};
        this.history.change(after, place);
    }

    /// The text, or something else that the form shows, has changed.
    onText() {
        const {text} = this.history;
        const {root, error} = read(text);
        this.cards.show(root, text, error && `Line ${error.line}, column ${error.column}: ${error.message}.`);
        this.textView.show(text);
        this.textView.showError(error && {line: error.line, column: error.column, text: error.message});
        this.showState();
        const asked = JSON.stringify([text, this.cards.hiddenBlocks]);
        if (asked !== this.asked) {
            this.asked = asked;
            this.player.renew();
            this.checker?.want(text);
        }
        this.findings.place();
    }

    showState() {
        const {history} = this;
        find('#undo').disabled = history.past.length === 0;
        find('#redo').disabled = history.future.length === 0;
        find('#dirty').hidden = !history.isDirty;
        document.title = `${history.isDirty ? '• ' : ''}${this.config.path} – Overlay editor`;
    }

    async check(text) {
        try {
            const {error, findings} = await store.check(text);
            this.alert('checking', '');
            if (text === this.history.text) {
                const own = read(text).error;
                this.findings.show(findings, own ?? error);
                this.cards.showCounts(findings);
                // The page's own place is in letters, the program's in bytes.
                if (!own) {
                    this.textView.showError(error);
                }
            }
        } catch (error) {
            this.alert('checking', `Not checked: ${error.message}`);
        }
    }

    onPicture(facts) {
        this.alert('picture', '');
        this.values = facts.values;
        this.layer.show(facts.boxes, facts);
        this.transport.show(facts);
        find('#picture').setAttribute('aria-label', `Frame ${facts.frame} at ${facts.seconds.toFixed(2)} seconds`);
        this.cards.showMoment(new Set(facts.boxes.map(({block}) => block)));
        const {root} = read(this.history.text);
        if (root && !this.player.isPlaying) {
            this.cards.show(root, this.history.text);
        }
    }

    valueText(key) {
        const value = this.values[key];
        if (value === undefined) {
            return this.known.has(key) ? 'not now' : 'never delivered';
        }
        return typeof value === 'number' ? String(Number(value.toPrecision(10))) : String(value);
    }

    setPosition(block, {x, y}, step) {
        const path = ['overlay', block, 'position'];
        const placed = setValue(setValue(this.history.text, [...path, 'x'], x), [...path, 'y'], y);
        this.history.change(placed, step ?? `nudge ${block}`, step ? Infinity : undefined);
        find('#pointer-place').textContent = `x ${x}  y ${y}`;
    }

    hover(block) {
        this.layer.mark(block);
        this.cards.mark(block);
    }

    openBlock(block) {
        this.chooseTab(find('#blocks-tab'));
        if (this.cards.cards[block]) {
            this.cards.reveal(block);
        }
    }

    showText() {
        this.chooseTab(find('#text-tab'));
        this.textView.area.focus();
    }

    revealPlace(place) {
        this.chooseTab(find('#blocks-tab'));
        const block = blockOf(place);
        if (block !== undefined && this.cards.cards[block]) {
            this.cards.reveal(block);
        }
    }

    focusPlace(place) {
        this.findings.goTo(place);
    }

    onKey(event) {
        const isCommand = event.ctrlKey || event.metaKey;
        const key = event.key.toLowerCase();
        // The space bar belongs to whatever it presses or writes into, a comma only to what it can be written into.
        const takesSpace = event.target.matches?.('input, textarea, select, button, summary');
        const takesLetters = event.target.matches?.('input:not([type=checkbox]):not([type=range]), textarea, select');
        const act = isCommand ? {
            s: () => this.save(),
            z: () => (event.shiftKey ? this.history.redo() : this.history.undo()),
            y: () => this.history.redo(),
        }[key] : event.altKey ? undefined : {
            ' ': takesSpace ? undefined : () => this.transport.playOrStop(),
            ',': takesLetters ? undefined : () => this.player.step(-1),
            '.': takesLetters ? undefined : () => this.player.step(1),
        }[key];
        if (act && !find('dialog[open]')) {
            event.preventDefault();
            act();
        }
    }

    async save() {
        if (this.isSaving) {
            return;
        }
        this.isSaving = true;
        try {
            await this.saveText(this.history.text, this.config.etag);
        } finally {
            this.isSaving = false;
        }
    }

    async saveText(text, etag) {
        try {
            this.config.etag = (await store.save(text, etag)).etag;
            this.history.markSaved(text);
            this.alert('saving', '');
            this.say(`Saved ${this.config.path}`);
        } catch (error) {
            if (error.status === 412) {
                await this.settle(text, error.answer);
            } else {
                this.alert('saving', `Not saved: ${error.message}`);
            }
        }
    }

    /// The file is not the one that was read: the person chooses.
    async settle(text, onDisk) {
        const isGone = onDisk.etag === '';
        const choice = await askAboutConflict(text, isGone ? undefined : onDisk.text);
        if (choice === 'mine') {
            await this.saveText(text, onDisk.etag);
        } else if (choice === 'theirs') {
            this.config.etag = onDisk.etag;
            this.history.change(onDisk.text);
            this.history.markSaved(onDisk.text);
            this.alert('saving', '');
            this.say('This is the text on the disk. Undo brings yours back.');
        } else {
            const what = isGone ? 'is no longer there' : 'has changed on the disk';
            this.alert('saving', `Not saved: the file ${what}. Your text is still here.`);
        }
    }

    say(text) {
        find('#status').textContent = text;
        clearTimeout(this.quiet);
        this.quiet = setTimeout(() => {
            find('#status').textContent = '';
        }, 6000);
    }

    /// What must not be overlooked stays until it is put right or closed; `text` is '' when it is. Of several troubles
    /// the one shown is the first of TROUBLES.
    alert(about, text) {
        this.troubles[about] = text;
        const worst = TROUBLES.find((trouble) => this.troubles[trouble]);
        const shown = this.troubles[worst] ?? '';
        // What stands there unchanged is not said again because of another trouble.
        if (shown === this.alerted && shown !== text) {
            return;
        }
        this.alerted = shown;
        const place = find('#alert');
        place.hidden = shown === '';
        place.replaceChildren(shown, ' ', make('button', {type: 'button', class: 'small', onclick: () => this.alert(worst, '')}, 'Close'));
    }
}

function read(text) {
    try {
        return {root: readJson(text)};
    } catch (error) {
        return {error};
    }
}

async function start() {
    try {
        const [clip, schema, keys, config] =
            await Promise.all([store.clip(), store.schema(), store.keys(), store.config()]);
        new Editor({clip, schema, keys, config});
        document.documentElement.dataset.ready = 'true';
    } catch (error) {
        const place = find('#alert');
        place.hidden = false;
        place.textContent = `The editor cannot start: ${error.message}`;
    } finally {
        find('#status').textContent = '';
    }
}

start();

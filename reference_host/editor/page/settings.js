// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the page remembers for a person from one visit to the next: the theme and the aids over the picture.

function remembered(name) {
    try {
        return localStorage.getItem(name);
    } catch {
        return null;
    }
}

function remember(name, value) {
    try {
        localStorage.setItem(name, value);
    } catch {
        // A browser that keeps nothing: the setting holds for this visit.
    }
}

/// Without a choice the system's theme counts.
export function setUpTheme(select) {
    const apply = () => {
        document.documentElement.dataset.theme = select.value;
    };
    select.value = remembered('theme') ?? '';
    select.addEventListener('change', () => {
        remember('theme', select.value);
        apply();
    });
    apply();
}

/// A check box whose state is remembered; `apply(isOn)` now and at every change.
export function setUpSwitch(box, apply) {
    const before = remembered(box.id);
    box.checked = before === null ? box.checked : before === 'on';
    box.addEventListener('change', () => {
        remember(box.id, box.checked ? 'on' : 'off');
        apply(box.checked);
    });
    apply(box.checked);
}

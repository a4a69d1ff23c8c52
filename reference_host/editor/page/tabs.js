// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Two or more panels of which one is shown, by the tab pattern: arrow keys go from tab to tab.

export function setUpTabs(tabs, onChoose) {
    const panelOf = (tab) => document.getElementById(tab.getAttribute('aria-controls'));
    const choose = (chosen) => {
        for (const tab of tabs) {
            tab.setAttribute('aria-selected', String(tab === chosen));
            tab.tabIndex = tab === chosen ? 0 : -1;
            panelOf(tab).hidden = tab !== chosen;
        }
        onChoose(chosen);
    };
    tabs.forEach((tab, index) => {
        tab.addEventListener('click', () => choose(tab));
        tab.addEventListener('keydown', (event) => {
            const by = {ArrowLeft: -1, ArrowRight: 1}[event.key];
            if (by) {
                const next = tabs[(index + by + tabs.length) % tabs.length];
                next.focus();
                choose(next);
            }
        });
    });
    return choose;
}

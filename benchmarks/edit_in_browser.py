#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""From a typed letter to the new picture in the editor's page, and pictures a second while it plays.

    benchmarks/edit_in_browser.py PROGRAM CLIP CONFIG.json
"""
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

CHANGES = 12
PLAYED_SECONDS = 5

# Notes when a picture has been put on the page.
WATCH = """
window.shown = [];
const prototype = CanvasRenderingContext2D.prototype;
for (const name of ['putImageData', 'drawImage']) {
    const usual = prototype[name];
    prototype[name] = function (...given) {
        const result = usual.apply(this, given);
        window.shown.push(performance.now());
        return result;
    };
}
document.querySelectorAll('details').forEach((card) => { card.open = true; });
"""

TYPE = """
const [number, done] = arguments;
const template = document.querySelector('textarea');
window.shown.length = 0;
const begin = performance.now();
template.value = template.value.replace(/ ?#\\d*$/, '') + ' #' + number;
template.dispatchEvent(new InputEvent('input', { bubbles: true }));
setTimeout(() => done(window.shown.map((time) => time - begin)), 1500);
"""

PLAY = """
window.shown.length = 0;
const isPlay = (button) => /play/i.test(button.getAttribute('aria-label') || button.title || button.textContent);
[...document.querySelectorAll('button')].find(isPlay).click();
"""


def main():
    program, clip, config = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        copy = str(Path(folder, "config.json"))
        shutil.copy(config, copy)
        editor = subprocess.Popen([program, "edit", clip, "-c", copy, "--no-browser"], stdout=subprocess.PIPE, text=True)
        options = webdriver.ChromeOptions()
        for option in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1600,1000"):
            options.add_argument(option)
        browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        try:
            browser.get(editor.stdout.readline().strip())
            time.sleep(6)
            browser.execute_script(WATCH)
            waits = [browser.execute_async_script(TYPE, number)[0] for number in range(CHANGES)]
            print(f"change to picture: {min(waits):.0f} to {max(waits):.0f} ms")
            browser.execute_script(PLAY)
            time.sleep(PLAYED_SECONDS)
            pictures = browser.execute_script("return window.shown.length")
            print(f"playing: {pictures / PLAYED_SECONDS:.1f} pictures a second")
        finally:
            browser.quit()
            editor.terminate()


if __name__ == "__main__":
    main()

#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""The editor as a person uses it: the built program, its page in a real browser, and the files that come out."""

import base64
import contextlib
import json
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import tempfile
import unittest

import browser

from selenium.webdriver import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

PROGRAM = os.environ.get("OVERLAY_PROGRAM", str(browser.SOURCE / "build/dev/bin/stanag-overlay"))
EXAMPLES = sorted((browser.SOURCE / "examples").glob("*.json"))

# Both pictures are drawn to canvases of the same kind and compared there, byte for byte. The result is the first byte
# that differs, or -1.
SAME_PIXELS = """
const [png, done] = arguments;
const image = new Image();
image.onerror = () => done('no picture');
image.onload = () => {
    const shown = document.querySelector('#picture');
    const [width, height] = [image.naturalWidth, image.naturalHeight];
    if (shown.width !== width || shown.height !== height) {
        done(`${shown.width}x${shown.height} is not ${width}x${height}`);
        return;
    }
    const bytes = (picture) => {
        const canvas = Object.assign(document.createElement('canvas'), {width, height});
        const context = canvas.getContext('2d', {willReadFrequently: true});
        context.drawImage(picture, 0, 0);
        return context.getImageData(0, 0, width, height).data;
    };
    const [a, b] = [bytes(shown), bytes(image)];
    done(a.findIndex((byte, index) => byte !== b[index]));
};
image.src = 'data:image/png;base64,' + png;
"""

# Counts questions on the way, to know when the page is at rest.
COUNT_QUESTIONS = """
const ask = window.fetch;
window.asking = 0;
window.fetch = async (...rest) => {
    window.asking += 1;
    try {
        return await ask(...rest);
    } finally {
        setTimeout(() => { window.asking -= 1; }, 30);
    }
};
"""


class PageTest(unittest.TestCase):
    """One browser and one clip for all tests; each has a folder and a running program of its own."""

    @classmethod
    def setUpClass(cls):
        cls.clips = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.clips.cleanup)
        cls.clip = str(pathlib.Path(cls.clips.name) / "flight.ts")
        subprocess.run([PROGRAM, "sample", cls.clip, "--size", "640x360", "--fps", "4", "--seconds", "10"],
                       check=True, capture_output=True)
        cls.driver = browser.start()
        cls.addClassCleanup(cls.driver.quit)

    @contextlib.contextmanager
    def editing(self, text, most_bytes=None):
        """A folder with a configuration of this text, opened in the page; gives the file. The program can write files
        of `most_bytes`."""
        with tempfile.TemporaryDirectory() as folder:
            config = pathlib.Path(folder) / "config" / "overlay.json"
            config.parent.mkdir()
            config.write_bytes(text.encode())
            program = subprocess.Popen([PROGRAM, "edit", self.clip, "-c", str(config), "--no-browser"],
                                       stdout=subprocess.PIPE, text=True, preexec_fn=None if most_bytes is None else
                                       lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (most_bytes, most_bytes)))
            try:
                self.open(program.stdout.readline().split()[-1])
                yield config
                self.check_console()
                self.leave()
            finally:
                program.send_signal(signal.SIGINT)
                self.assertEqual(program.wait(20), 0)
                program.stdout.close()

    def open(self, address):
        self.driver.get(address)
        self.wait(lambda: self.js("return document.documentElement.dataset.ready === 'true'"), "the page")
        self.wait(lambda: self.js("return document.querySelector('#picture').width") == 640, "a picture")
        self.js(COUNT_QUESTIONS)
        self.rest()

    def leave(self):
        # Unsaved work makes the browser ask.
        self.driver.get("about:blank")
        with contextlib.suppress(Exception):
            self.driver.switch_to.alert.accept()

    def check_console(self):
        """Nothing but refused requests, which the page tells, and the question before leaving, which needs a person."""
        allowed = ("Failed to load resource", "Blocked attempt to show a 'beforeunload'")
        told = [line["message"] for line in self.driver.get_log("browser")]
        self.assertEqual([line for line in told if not any(words in line for words in allowed)], [])

    def js(self, script, *values):
        return self.driver.execute_script(script, *values)

    def wait(self, condition, what):
        WebDriverWait(self.driver, 20, poll_frequency=0.02).until(lambda _: condition(), f"waited for {what}")

    def rest(self):
        self.wait(lambda: self.js("return window.asking") == 0, "the page to be at rest")

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def field(self, place, kind="input:not([type=color]), textarea, select"):
        """The input of a place such as overlay[0].textSize."""
        inside = ", ".join(f'[data-place="{place}"] {part.strip()}' for part in kind.split(","))
        return self.find(inside)

    def open_card(self, block):
        card = self.find(f'.card[data-place="overlay[{block}]"] .toggle')
        if card.get_attribute("aria-expanded") == "false":
            self.js("arguments[0].click()", card)

    def unfold(self, place):
        self.js("arguments[0].open = true", self.find(f'[data-place="{place}"] details'))

    def enter(self, place, value):
        field = self.field(place)
        field.send_keys(Keys.CONTROL, "a")
        field.send_keys(Keys.BACKSPACE, value)

    def choose(self, place, value):
        self.js("arguments[0].value = [...arguments[0].options].find((o) => o.textContent === arguments[1]).value;"
                "arguments[0].dispatchEvent(new Event('change', {bubbles: true}))", self.field(place, "select"), value)

    def press(self, label, within="body"):
        self.js("arguments[0].click()", self.find(f'{within} [aria-label="{label}"]'))

    def keys(self, *keys):
        ActionChains(self.driver).key_down(Keys.CONTROL).send_keys(*keys).key_up(Keys.CONTROL).perform()

    def save(self):
        self.keys("s")
        self.wait(lambda: not self.find("#dirty").is_displayed(), "saving")

    def text(self):
        """What the page holds, with line feeds."""
        return self.find("#text-panel textarea").get_property("value")

    def seek(self, seconds):
        self.js("const s = document.querySelector('#time'); s.value = arguments[0];"
                "s.dispatchEvent(new Event('input', {bubbles: true}))", seconds)
        self.rest()

    def assert_picture_is_that_of(self, config, seconds):
        with tempfile.TemporaryDirectory() as folder:
            picture = pathlib.Path(folder) / "frame.png"
            subprocess.run([PROGRAM, "frame", self.clip, "-c", str(config), "--at", str(seconds), "-o", str(picture)],
                           check=True, capture_output=True)
            encoded = base64.b64encode(picture.read_bytes()).decode()
        self.rest()
        self.assertEqual(self.driver.execute_async_script(SAME_PIXELS, encoded), -1, "the first byte that differs")


class Examples(PageTest):
    def test_saving_changes_nothing_and_a_field_its_line(self):
        for example in EXAMPLES:
            with self.subTest(example.name):
                self.change_one_number(example.read_text())

    def change_one_number(self, text):
        first = json.loads(text)["overlay"][0]["textSize"]
        with self.editing(text) as config:
            self.assertEqual(self.find("#findings h2").text, "No findings")
            self.keys("s")
            self.wait(lambda: self.find("#status").text.startswith("Saved"), "saving")
            self.assertEqual(config.read_bytes().decode(), text)
            self.seek(4)
            self.assert_picture_is_that_of(config, 4)

            self.open_card(0)
            self.enter("overlay[0].textSize", "41")
            self.save()
            self.assertEqual(config.read_bytes().decode(), text.replace(f'"textSize": {first}', '"textSize": 41', 1))
            self.assert_picture_is_that_of(config, 4)


HUD = (browser.SOURCE / "examples/full_screen_hud.json").read_text()
LASER = (browser.SOURCE / "examples/laser_range_block.json").read_text()


class Fields(PageTest):
    """Every kind of field: what is written, and that it is all that changes."""

    def saved(self, config):
        self.save()
        return config.read_bytes().decode()

    def test_scalars(self):
        text = LASER
        with self.editing(text) as config:
            self.open_card(0)
            self.unfold("overlay[0].formats.laser_prf_code")
            for change, old, new in [
                (lambda: self.enter("overlay[0].textSize", "31"), '"textSize": 30', '"textSize": 31'),
                (lambda: self.enter("overlay[0].bgAlpha", "0.5"), '"bgAlpha": 0.75', '"bgAlpha": 0.5'),
                (lambda: self.enter("overlay[0].textColor", "#00FF7f"), '"#ffd040"', '"#00FF7f"'),
                (lambda: self.pick("overlay[0].bgColor", "#102030"), '"#300000"', '"#102030"'),
                (lambda: self.enter("overlay[0].condition.equals", "17"), '"equals": true', '"equals": 17'),
                (lambda: self.enter("overlay[0].condition.equals", "on"), '"equals": 17', '"equals": "on"'),
                (lambda: self.enter("overlay[0].condition.equals", "false"), '"equals": "on"', '"equals": false'),
                (lambda: self.choose("overlay[0].formats.laser_prf_code.date", "true"),
                 '"invalidValues": [0]', '"invalidValues": [0], "date": true'),
                (lambda: self.choose("overlay[0].formats.laser_prf_code.timestampUnit", "us"),
                 '"date": true', '"date": true, "timestampUnit": "us"'),
                (lambda: self.choose("overlay[0].formats.laser_prf_code.date", "not set: false"),
                 '"date": true, ', ''),
                (lambda: self.press("Clear timestampUnit", '[data-place="overlay[0].formats.laser_prf_code"]'),
                 ', "timestampUnit": "us"', ''),
                (lambda: self.enter("overlay[0].formats.laser_prf_code.invalidValues[0]", "N/A"),
                 '"invalidValues": [0]', '"invalidValues": ["N/A"]'),
                (lambda: self.enter("overlay[0].position.x", ""), '{ "x": 0.36, "y"', '{ "y"'),
                (lambda: self.enter("overlay[0].position.y", ""), '      "position": { "y": 0.8 },\n', ''),
                (lambda: self.enter("overlay[0].missingPlaceholder", "n/a °"),
                 '      }\n    }\n', '      },\n      "missingPlaceholder": "n/a °"\n    }\n'),
            ]:
                with self.subTest(new):
                    self.assertEqual(text.count(old), 1)
                    text = text.replace(old, new)
                    change()
                    self.assertEqual(self.saved(config), text)
            self.assert_picture_is_that_of(config, 0)

    def pick(self, place, color):
        self.js("arguments[0].value = arguments[1]; arguments[0].dispatchEvent(new Event('input', {bubbles: true}))",
                self.field(place, "input[type=color]"), color)

    def test_an_unfinished_number_writes_nothing(self):
        with self.editing(LASER) as config:
            self.open_card(0)
            self.field("overlay[0].textSize").send_keys("-")
            self.assertEqual(self.text(), LASER)
            self.field("overlay[0].textSize").send_keys(Keys.BACKSPACE, Keys.BACKSPACE)
            self.assertEqual(self.text(), LASER.replace('"textSize": 30', '"textSize": 3'))
            self.assertEqual(config.read_text(), LASER)

    def test_long_whole_numbers_keep_their_digits(self):
        text = '{"overlay": [{"condition": {"key": "a", "bitmask": 1, "equals": 9223372036854775807}, "formatString": "A"}]}'
        with self.editing(text) as config:
            self.open_card(0)
            self.unfold_all()
            self.assertEqual(self.field("overlay[0].condition.equals").get_property("value"), "9223372036854775807")
            for name, before, typed in (("bitmask", ' 1,', "9007199254740993"),
                                        ("equals", " 9223372036854775807}", "9007199254740995")):
                self.enter(f"overlay[0].condition.{name}", typed)
                text = text.replace(before, f" {typed}{before[-1]}")
                self.assertEqual(self.saved(config), text)
            self.js("document.activeElement.blur()")
            self.assertEqual(self.field("overlay[0].condition.bitmask").get_property("value"), "9007199254740993")

    def unfold_all(self):
        self.js("document.querySelectorAll('.card details').forEach((part) => { part.open = true; })")

    def test_formats_are_renamed_added_and_removed(self):
        with self.editing(LASER) as config:
            self.open_card(0)
            key = self.field("overlay[0].formats.laser_prf_code", ".entry-head input")
            key.send_keys(Keys.CONTROL, "a")
            key.send_keys("target_width_m", Keys.ENTER)
            text = LASER.replace('"laser_prf_code": {', '"target_width_m": {')
            self.assertEqual(self.saved(config), text)

            adder = self.field("overlay[0].formats", ".adder input")
            adder.send_keys("heading_deg", Keys.ENTER)
            text = text.replace('[0] }\n', '[0] },\n        "heading_deg": {}\n')
            self.assertEqual(self.saved(config), text)

            self.press("Remove the format of target_lrf_elev_m")
            text = text.replace('        "target_lrf_elev_m": { "decimals": 0, "holdLastMs": 500 },\n', '')
            self.assertEqual(self.saved(config), text)

            key = self.field("overlay[0].formats.heading_deg", ".entry-head input")
            key.send_keys(Keys.CONTROL, "a")
            key.send_keys("target_width_m", Keys.ENTER)
            self.assertEqual(self.find("#status").text, "target_width_m stands there already")
            self.assertEqual(config.read_bytes().decode(), text)

    def test_template_completes_keys_with_their_values(self):
        with self.editing('{"overlay": [{"formatString": "HDG "}]}') as config:
            self.open_card(0)
            area = self.field("overlay[0].formatString")
            area.send_keys(Keys.CONTROL, Keys.END)
            area.send_keys("%head")
            first = self.find('.completion [role="option"][aria-selected="true"]').text.split()
            self.assertEqual(first[0], "heading_deg")
            self.assertAlmostEqual(float(first[1]), 295.2, delta=0.1)
            self.assertEqual(self.js("return document.getElementById(arguments[0].getAttribute('aria-activedescendant'))",
                                     area), self.find('.completion [aria-selected="true"]'))
            area.send_keys(Keys.ENTER, "°", Keys.ESCAPE)
            area.send_keys(Keys.BACKSPACE, Keys.ENTER, "%{pla", Keys.ARROW_DOWN, Keys.ARROW_UP, Keys.TAB)
            self.assertEqual(area.get_property("value"), "HDG %heading_deg\n%platform_call_sign")
            self.assertFalse(self.find(".completion").is_displayed())
            self.assertIsNone(area.get_attribute("aria-activedescendant"))
            self.assertEqual(self.saved(config), '{"overlay": [{"formatString": "HDG %heading_deg\\n%platform_call_sign"}]}')
            used = self.find(".used").text
            self.assertIn("platform_call_sign HERON 21", " ".join(used.split()))

    def test_a_misspelt_key_is_marked_and_mended(self):
        with self.editing('{"overlay": [{"formatString": "%{headin_deg}° %heading_deg"}]}') as config:
            self.open_card(0)
            area = self.field("overlay[0].formatString")
            self.assertEqual(area.get_attribute("aria-invalid"), "true")
            note = self.find('[data-place="overlay[0].formatString"] .note')
            self.assertIn('the input never delivers "headin_deg"; did you mean "heading_deg"?', note.text)
            self.js("arguments[0].click()", note.find_element(By.TAG_NAME, "button"))
            self.rest()
            self.assertEqual(self.find("#findings h2").text, "No findings")
            self.assertIsNone(area.get_attribute("aria-invalid"))
            self.assertEqual(self.saved(config), '{"overlay": [{"formatString": "%{heading_deg}° %heading_deg"}]}')

    def test_unknown_members_stay_and_are_renamed(self):
        text = '{"overlay": [{"textsize": 40, "formatString": "A", "note": {"by": [1,2]}}], "version": 3}'
        with self.editing(text) as config:
            self.open_card(0)
            self.assertEqual(self.find("#findings h2").text, "3 findings")
            # What has no field is shown in the text.
            self.js("arguments[0].click()", next(one for one in self.driver.find_elements(By.CSS_SELECTOR, ".finding")
                                                 if one.find_element(By.TAG_NAME, "code").text == "version"))
            self.assertTrue(self.find("#text-panel").is_displayed())
            self.js("document.querySelector('#blocks-tab').click()")
            self.js("arguments[0].click()", self.find('[data-place="overlay[0].textsize"] .note button'))
            self.assertEqual(self.js("return document.activeElement"), self.field("overlay[0].textSize"))
            self.assertEqual(self.saved(config), text.replace("textsize", "textSize"))


class Blocks(PageTest):
    def test_cards_are_added_copied_moved_deleted_and_undone(self):
        with self.editing(HUD) as config:
            blocks = json.loads(HUD)["overlay"]
            held = lambda: [block.get("formatString") for block in json.loads(self.text())["overlay"]]
            names = [block["formatString"] for block in blocks]
            card = lambda number: f'.card[data-place="overlay[{number}]"]'

            self.press("Move block down (drawn later)", card(2))
            moved = names[:2] + [names[3], names[2]] + names[4:]
            self.assertEqual(held(), moved)
            self.press("Copy block", card(3))
            self.assertEqual(held(), moved[:4] + moved[3:])
            self.press("Delete block", card(0))
            self.assertEqual(held(), (moved[:4] + moved[3:])[1:])
            self.js("arguments[0].click()", self.find(".add"))
            self.assertEqual(held()[-1], "NEW")
            self.assertEqual(self.js("return document.activeElement.tagName"), "TEXTAREA")
            for _ in range(4):
                self.keys("z")
            self.assertEqual(self.text(), HUD)
            self.assertFalse(self.find("#dirty").is_displayed())
            for _ in range(4):
                self.keys("y")
            self.assertEqual(held()[-1], "NEW")
            for _ in range(4):
                self.js("document.querySelector('#undo').click()")
            self.save()
            self.assertEqual(config.read_bytes().decode(), HUD)

    def test_a_hidden_block_is_not_drawn_and_not_written(self):
        with self.editing(HUD) as config:
            self.press("Hide for a moment", '.card[data-place="overlay[0]"]')
            self.rest()
            without = json.loads(HUD)
            del without["overlay"][0]
            other = config.with_name("without.json")
            other.write_text(json.dumps(without))
            self.assert_picture_is_that_of(other, 0)
            self.assertEqual(self.text(), HUD)

    def outline(self, block):
        return next(one for one in self.driver.find_elements(By.CSS_SELECTOR, ".outline")
                    if one.get_attribute("aria-label").startswith(f"Block {block + 1},"))

    def position(self, block):
        position = json.loads(self.text())["overlay"][block]["position"]
        return position["x"], position["y"]

    def test_dragging_sets_the_position_and_nothing_else(self):
        with self.editing(HUD) as config:
            scale = 640 / self.find("#layer").rect["width"]
            before = self.position(2)
            actions = ActionChains(self.driver).key_down(Keys.ALT).click_and_hold(self.outline(2))
            actions.move_by_offset(31, 17).move_by_offset(30, 23).release().key_up(Keys.ALT).perform()
            self.rest()
            x, y = self.position(2)
            self.assertAlmostEqual(x, before[0] + 61 * scale / 640, delta=2 / 640)
            self.assertAlmostEqual(y, before[1] + 40 * scale / 360, delta=2 / 360)
            self.save()
            old = f'"x": {before[0]}, "y": {before[1]} }},\n      "textSize": 34'
            self.assertEqual(HUD.count(old), 1)
            self.assertEqual(config.read_bytes().decode(), HUD.replace(old, old.replace(str(before[0]), str(x)).replace(
                f'"y": {before[1]}', f'"y": {y}')))
            self.assert_picture_is_that_of(config, 0)
            self.keys("z")
            self.assertEqual(self.text(), HUD)

    def test_snapping_centres(self):
        with self.editing('{"overlay": [{"formatString": "SNAP", "textSize": 60, "position": {"x": 0.2, "y": 0.3}}]}'):
            outline = self.outline(0)
            stage = self.find("#layer").rect
            middle = stage["x"] + stage["width"] / 2 - (outline.rect["x"] + outline.rect["width"] / 2)
            actions = ActionChains(self.driver).click_and_hold(outline)
            actions.move_by_offset(int(middle) - 20, 3).move_by_offset(16, 0).perform()
            self.assertEqual(len([guide for guide in self.driver.find_elements(By.CSS_SELECTOR, ".guide.vertical")
                                  if guide.is_displayed()]), 1)
            ActionChains(self.driver).release().perform()
            self.rest()
            label = self.outline(0)
            centre = label.rect["x"] + label.rect["width"] / 2 - stage["x"]
            self.assertAlmostEqual(centre, stage["width"] / 2, delta=2 * stage["width"] / 640)
            self.assertFalse(self.find(".guide.vertical").is_displayed())

    def test_arrow_keys_nudge_to_the_next_place(self):
        with self.editing('{"overlay": [{"formatString": "N", "position": {"x": 0.5, "y": 0.5}}]}'):
            self.outline(0).send_keys(Keys.ARROW_RIGHT, Keys.ARROW_RIGHT, Keys.ARROW_UP)
            self.rest()
            self.assertEqual(self.position(0), (0.5063, 0.4944))
            self.outline(0).send_keys(Keys.SHIFT, Keys.ARROW_DOWN)
            self.rest()
            self.assertEqual(self.position(0), (0.5063, 0.55))
            self.keys("z")
            self.keys("z")
            self.assertEqual(self.position(0), (0.5, 0.5))

    def test_steps_and_playing(self):
        with self.editing(LASER) as config:
            frame = lambda: int(self.find("#time-text").text.split("frame ")[1].split()[0])
            self.assertEqual(frame(), 1)
            self.press("One frame on")
            self.press("One frame on")
            self.rest()
            self.assertEqual(frame(), 3)
            self.press("One frame back")
            self.rest()
            self.assertEqual(frame(), 2)
            self.assert_picture_is_that_of(config, 0.25)
            self.seek(5)
            self.assertEqual(frame(), 21)
            self.press("Play")
            self.wait(lambda: frame() >= 25, "playing")
            self.press("Pause")
            self.rest()
            self.assertNotIn(" of ", self.find("#time-text").text)
            self.seek(10)
            self.assertTrue(self.find("#time-text").text.endswith("frame 40 of 40"), self.find("#time-text").text)

    def test_space_and_stops_belong_to_what_has_the_focus(self):
        with self.editing(LASER):
            frame = lambda: int(self.find("#time-text").text.split("frame ")[1].split()[0])
            self.find("#show-grid").send_keys(Keys.SPACE)
            self.assertTrue(self.find("#show-grid").is_selected())
            self.assertEqual(self.find("#play").get_attribute("aria-label"), "Play")
            self.find("#show-grid").send_keys(".")
            self.rest()
            self.find("#time").send_keys(".")
            self.rest()
            self.find("#save").send_keys(".")
            self.rest()
            self.assertEqual(frame(), 4)
            self.find("#save").send_keys(",")
            self.rest()
            self.assertEqual(frame(), 3)
            self.open_card(0)
            self.field("overlay[0].formatString").send_keys(".")
            self.rest()
            self.assertEqual(frame(), 3)
            self.js("document.activeElement.blur()")
            self.find("body").send_keys(" ")
            self.wait(lambda: frame() > 4, "playing")
            self.find("body").send_keys(" ")
            self.rest()

    def test_switches_show_their_aids(self):
        with self.editing(HUD):
            for theme in ("light", "dark"):
                self.js("const s = document.querySelector('#theme'); s.value = arguments[0];"
                        "s.dispatchEvent(new Event('change'))", theme)
                self.assertEqual(self.js("return document.documentElement.dataset.theme"), theme)
                shade = self.js("return getComputedStyle(document.body).backgroundColor.match(/[0-9]+/g).map(Number)")
                self.assertEqual(sum(shade[:3]) > 384, theme == "light", shade)
            for switch, shown in (("#show-grid", "#grid"), ("#show-safe", "#safe")):
                self.assertFalse(self.find(shown).is_displayed())
                self.find(switch).click()
                self.assertTrue(self.find(shown).is_displayed())
                self.find(switch).click()
                self.assertFalse(self.find(shown).is_displayed())
            marked = "is-marked"
            ActionChains(self.driver).move_to_element(self.outline(2)).perform()
            self.assertIn(marked, self.find('.card[data-place="overlay[2]"]').get_attribute("class"))
            ActionChains(self.driver).move_to_element(self.find('.card[data-place="overlay[1]"] header')).perform()
            self.assertIn(marked, self.outline(1).get_attribute("class"))
            self.assertNotIn(marked, self.outline(2).get_attribute("class"))

    def test_without_snapping_nothing_takes_hold(self):
        with self.editing('{"overlay": [{"formatString": "SNAP", "textSize": 60, "position": {"x": 0.2, "y": 0.3}}]}'):
            self.find("#snap").click()
            outline, stage = self.outline(0), self.find("#layer").rect
            middle = stage["x"] + stage["width"] / 2 - (outline.rect["x"] + outline.rect["width"] / 2)
            ActionChains(self.driver).click_and_hold(outline).move_by_offset(int(middle) - 4, 3).perform()
            self.assertFalse(self.find(".guide.vertical").is_displayed())
            ActionChains(self.driver).release().perform()

    def test_an_outline_with_the_focus_stays_while_its_block_is_not_drawn(self):
        with self.editing('{"overlay": [{"formatString": "A", "position": {"x": 0.5, "y": 0.5}}]}'):
            self.js("arguments[0].focus()", self.outline(0))
            self.js("document.querySelector('.card [aria-label=\"Hide for a moment\"]').click()")
            self.rest()
            self.assertEqual(self.js("return document.activeElement.className"), "outline")
            self.js("document.activeElement.blur();"
                    "document.querySelector('.card [aria-label=\"Hide for a moment\"]').click()")
            self.rest()
            self.outline(0).send_keys(Keys.ARROW_RIGHT)
            self.rest()
            self.assertEqual(self.position(0), (0.5031, 0.5))

    def test_a_drag_ends_when_the_button_is_up(self):
        with self.editing('{"overlay": [{"formatString": "A", "position": {"x": 0.5, "y": 0.5}}]}'):
            before = self.text()
            ActionChains(self.driver).click_and_hold(self.outline(0)).perform()
            self.js("arguments[0].dispatchEvent(new PointerEvent('pointermove', {clientX: 9, clientY: 9, buttons: 0}))",
                    self.outline(0))
            ActionChains(self.driver).move_by_offset(40, 0).release().perform()
            self.assertEqual(self.text(), before)

    def test_tabs_by_arrow_keys(self):
        with self.editing(LASER):
            self.find("#blocks-tab").send_keys(Keys.ARROW_RIGHT)
            self.assertTrue(self.find("#text-panel").is_displayed())
            self.assertEqual(self.js("return document.activeElement.id"), "text-tab")
            self.find("#text-tab").send_keys(Keys.ARROW_RIGHT)
            self.assertFalse(self.find("#text-panel").is_displayed())
            self.find("#blocks-tab").send_keys(Keys.ARROW_LEFT)
            self.assertTrue(self.find("#text-panel").is_displayed())


class Files(PageTest):
    TEXT = '{\r\n\t"overlay": [\r\n\t\t{"formatString": "A", "textSize": 20}\r\n\t]\r\n}\r\n'

    def change_size(self, size):
        self.open_card(0)
        self.enter("overlay[0].textSize", str(size))

    def test_other_line_ends_stay_in_form_and_text_view(self):
        with self.editing(self.TEXT) as config:
            self.change_size(21)
            self.js("document.querySelector('#text-tab').click()")
            area = self.find("#text-panel textarea")
            area.send_keys(Keys.CONTROL, Keys.HOME)
            area.send_keys(Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.END, ",", Keys.ENTER, '{"formatString": "B"}')
            self.save()
            self.assertEqual(config.read_bytes().decode(), self.TEXT.replace(
                "20}\r\n", '21},\r\n{"formatString": "B"}\r\n'))
            self.assertEqual(len(self.driver.find_elements(By.CSS_SELECTOR, ".card")), 2)

    def test_the_text_view_marks_the_line_of_an_error(self):
        with self.editing(HUD) as config:
            self.js("document.querySelector('#text-tab').click()")
            area = self.find("#text-panel textarea")
            area.send_keys(Keys.CONTROL, Keys.HOME)
            area.send_keys(Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ARROW_DOWN, "x")
            self.rest()
            self.assertEqual(self.find(".numbers .is-wrong").text, "4")
            self.assertTrue(self.find(".text-error").text.startswith("Line 4, column 1"), self.find(".text-error").text)
            self.assertEqual(self.find("#findings h2").text, "The text cannot be read (line 4)")
            self.assertTrue(self.find(".band").is_displayed())
            self.keys("s")
            self.wait(lambda: self.find("#alert").is_displayed(), "a refusal")
            self.assertEqual(config.read_bytes().decode(), HUD)
            self.js("document.querySelector('#blocks-tab').click()")
            self.assertIn("Line 4", self.find(".broken").text)
            self.keys("z")
            self.rest()
            self.assertFalse(self.find(".broken").is_displayed())
            self.assertEqual(len(self.driver.find_elements(By.CSS_SELECTOR, ".card")), 7)

    def test_a_conflict_shows_both_and_loses_nothing(self):
        theirs = self.TEXT.replace("A", "THEIRS")
        mine = self.TEXT.replace("20", "21")
        with self.editing(self.TEXT) as config:
            self.change_size(21)
            config.write_bytes(theirs.encode())
            self.keys("s")
            self.wait(lambda: self.driver.find_elements(By.CSS_SELECTOR, "dialog[open]"), "the dialog")
            marked = [line.text for line in self.driver.find_elements(By.CSS_SELECTOR, ".line.differs")]
            self.assertEqual(["21" in line for line in marked], [True, False])
            self.assertEqual(["THEIRS" in line for line in marked], [False, True])
            self.answer("Go on editing")
            self.assertEqual(config.read_bytes().decode(), theirs)
            self.assertEqual(self.text(), mine.replace("\r\n", "\n"))

            self.keys("s")
            self.answer("Take the disk")
            self.assertEqual(self.text(), theirs.replace("\r\n", "\n"))
            self.assertFalse(self.find("#dirty").is_displayed())
            self.keys("z")
            self.assertEqual(self.text(), mine.replace("\r\n", "\n"))
            self.save()
            self.assertEqual(config.read_bytes().decode(), mine)

            self.change_size(22)
            config.write_bytes(theirs.encode())
            self.keys("s")
            self.answer("Save mine over it")
            self.wait(lambda: not self.find("#dirty").is_displayed(), "saving")
            self.assertEqual(config.read_bytes().decode(), self.TEXT.replace("20", "22"))

    def test_the_column_of_an_error_counts_letters(self):
        with self.editing('{"overlay": [{"formatString": "°°°°"x}]}'):
            self.assertEqual(self.find("#findings h2").text, "The text cannot be read (line 1)")
            self.js("document.querySelector('#text-tab').click()")
            told = lambda: self.find(".text-error").text
            self.assertTrue(told().startswith("Line 1, column 37:"), told())
            self.find("#text-panel textarea").send_keys(Keys.CONTROL, Keys.END)
            self.find("#text-panel textarea").send_keys(" ")
            self.rest()
            self.assertTrue(told().startswith("Line 1, column 37:"), told())
            self.keys("z")
            self.rest()

    def test_a_file_that_is_gone_is_told(self):
        mine = self.TEXT.replace("20", "21")
        with self.editing(self.TEXT) as config:
            self.change_size(21)
            config.unlink()
            self.keys("s")
            self.wait(lambda: self.driver.find_elements(By.CSS_SELECTOR, "dialog[open]"), "the dialog")
            self.assertEqual(self.find("#conflict-title").text, "The file is no longer there")
            self.assertEqual([pane.text for pane in self.driver.find_elements(By.CSS_SELECTOR, "dialog pre")][1], "")
            self.assertEqual(len(self.driver.find_elements(By.CSS_SELECTOR, "dialog .buttons button")), 2)
            self.answer("Go on editing")
            self.assertFalse(config.exists())
            self.assertIn("no longer there", self.find("#alert").text)
            self.keys("s")
            self.answer("Save mine")
            self.wait(lambda: not self.find("#dirty").is_displayed(), "saving")
            self.assertEqual(config.read_bytes().decode(), mine)
            self.assertFalse(self.find("#alert").is_displayed())

    def test_a_file_that_cannot_grow_is_as_it_was(self):
        with self.editing(self.TEXT, most_bytes=4096) as config:
            long = self.TEXT.replace('"A"', json.dumps("A" * 6000)).replace("\r\n", "\n")
            self.js("const area = document.querySelector('#text-panel textarea'); area.value = arguments[0];"
                    "area.dispatchEvent(new Event('input', {bubbles: true}))", long)
            self.keys("s")
            self.wait(lambda: self.find("#alert").is_displayed(), "a message")
            self.assertRegex(self.find("#alert").text, "^Not saved: .*(too large|limit)")
            self.assertTrue(self.find("#dirty").is_displayed())
            self.assertEqual(self.text(), long)
            self.assertEqual(config.read_bytes().decode(), self.TEXT)
            self.assertEqual([file.name for file in config.parent.iterdir()], [config.name])
            # A picture that comes does not put right what was not saved.
            self.seek(2)
            self.assertIn("Not saved: ", self.find("#alert").text)

    def test_troubles_with_pictures_pass_and_never_hide_an_unsaved_text(self):
        with self.editing(self.TEXT) as config:
            self.js("window.goodFetch = window.fetch; window.fetch = () => Promise.reject(new Error('away'))")
            self.seek(2)
            self.wait(lambda: self.find("#alert").text.startswith("No picture: "), "a message")
            self.js("window.fetch = window.goodFetch")
            self.seek(3)
            self.wait(lambda: not self.find("#alert").is_displayed(), "the message to go")
            self.change_size(21)
            config.chmod(0o444)
            self.keys("s")
            self.wait(lambda: self.find("#alert").is_displayed(), "a message")
            self.js("window.fetch = () => Promise.reject(new Error('away'))")
            self.change_size(22)
            self.seek(4)
            self.assertTrue(self.find("#alert").text.startswith("Not saved: "), self.find("#alert").text)
            self.js("window.fetch = window.goodFetch")
            config.chmod(0o644)
            self.change_size(23)
            self.save()
            self.wait(lambda: not self.find("#alert").is_displayed(), "the message to go")

    def answer(self, start):
        self.wait(lambda: self.driver.find_elements(By.CSS_SELECTOR, "dialog[open]"), "the dialog")
        button = next(one for one in self.driver.find_elements(By.CSS_SELECTOR, "dialog .buttons button")
                      if one.text.startswith(start))
        button.click()
        self.wait(lambda: not self.driver.find_elements(By.CSS_SELECTOR, "dialog"), "the dialog to go")

    def test_what_cannot_be_saved_stays_in_the_page(self):
        with self.editing(self.TEXT) as config:
            self.change_size(21)
            config.chmod(0o444)
            self.keys("s")
            self.wait(lambda: self.find("#alert").is_displayed(), "a message")
            self.assertIn("read-only", self.find("#alert").text)
            self.assertEqual(config.read_bytes().decode(), self.TEXT)
            config.chmod(0o644)
            shutil.rmtree(config.parent)
            self.keys("s")
            self.wait(lambda: "read-only" not in self.find("#alert").text, "another message")
            self.assertTrue(self.find("#alert").text.startswith("Not saved: "), self.find("#alert").text)
            self.assertEqual(self.text(), self.TEXT.replace("20", "21").replace("\r\n", "\n"))
            self.assertTrue(self.find("#dirty").is_displayed())

    def test_leaving_with_unsaved_work_asks(self):
        with self.editing(self.TEXT):
            self.change_size(21)
            self.js("window.asked = !window.dispatchEvent(new Event('beforeunload', {cancelable: true}))")
            self.assertTrue(self.js("return window.asked"))
            self.keys("z")
            self.js("window.asked = !window.dispatchEvent(new Event('beforeunload', {cancelable: true}))")
            self.assertFalse(self.js("return window.asked"))


if __name__ == "__main__":
    unittest.main(verbosity=2)

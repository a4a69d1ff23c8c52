#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""The page's modules without a page: their rows run in a browser."""

import unittest

import browser

from selenium.webdriver.support.ui import WebDriverWait


class Modules(unittest.TestCase):
    def test_rows(self):
        driver = browser.start()
        self.addCleanup(driver.quit)
        with browser.module_server() as address:
            driver.get(f"{address}/tests/modules_test.html")
            report = driver.find_element("id", "report")
            WebDriverWait(driver, 60).until(lambda _: report.text != "running")
            self.assertRegex(report.text, r"^passed \d+$", driver.get_log("browser"))


if __name__ == "__main__":
    unittest.main()

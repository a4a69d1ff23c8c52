# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""One headless browser, and a server of the page's modules for tests of single modules."""

import contextlib
import http.server
import pathlib
import sys
import threading

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
except ImportError:
    print("skipped: python3-selenium is not installed; scripts/setup installs it")
    sys.exit(77)

CHROMIUM = "/usr/bin/chromium"
DRIVER = "/usr/bin/chromedriver"
for program in (CHROMIUM, DRIVER):
    if not pathlib.Path(program).exists():
        print(f"skipped: {program} is not installed; scripts/setup installs it")
        sys.exit(77)

SOURCE = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = {"page": SOURCE / "reference_host/editor/page", "tests": SOURCE / "tests/editor"}


def start(width=1400, height=900, *more):
    options = webdriver.ChromeOptions()
    for option in ("--headless=new", "--no-sandbox", "--disable-gpu", f"--window-size={width},{height}",
                   "--disable-dev-shm-usage", "--lang=en", *more):
        options.add_argument(option)
    options.binary_location = CHROMIUM
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(options=options, service=Service(DRIVER))


class ModuleHandler(http.server.SimpleHTTPRequestHandler):
    """/page/NAME and /tests/NAME, nothing else."""

    extensions_map = {".js": "text/javascript", ".html": "text/html", ".css": "text/css", "": "text/plain"}

    def translate_path(self, path):
        parts = path.split("?")[0].strip("/").split("/")
        known = len(parts) == 2 and parts[0] in FOLDERS
        return str(FOLDERS[parts[0]] / parts[1]) if known else "/nonexistent"

    def log_message(self, *_):
        pass


@contextlib.contextmanager
def module_server():
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), ModuleHandler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    try:
        yield f"http://127.0.0.1:{server.server_address[1]}"
    finally:
        server.shutdown()
        server.server_close()

#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""Every link of a page to a file of this tree leads somewhere, headings included, and docs/README.md links to every page.

    check_links.py SOURCE_DIR
"""

import re
import sys
from pathlib import Path

LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
CODE = re.compile(r"^```.*?^```$|`[^`\n]+`", re.MULTILINE | re.DOTALL)


def anchors(page):
    """The names by which the headings of a page can be reached."""
    headings = re.findall(r"^#+ (.*)$", re.sub(r"^```.*?^```$", "", page.read_text(), flags=re.MULTILINE | re.DOTALL),
                          re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def fault(page, link):
    """What is wrong with a link on a page, or nothing."""
    if re.match(r"[a-z]+:", link):
        return None
    path, _, anchor = link.partition("#")
    target = (page.parent / path).resolve() if path else page.resolve()
    if not target.exists():
        return "no such file"
    if anchor and anchor not in anchors(target):
        return "no such heading"
    return None


def main(root):
    pages = [*root.glob("*.md"), *root.glob("docs/*.md"), *root.glob("benchmarks/*.md")]
    faults = []
    for page in sorted(pages):
        for link in LINK.findall(CODE.sub("", page.read_text())):
            problem = fault(page, link)
            if problem:
                faults.append(f"{page.relative_to(root)}: {link}: {problem}")
    index = LINK.findall((root / "docs/README.md").read_text())
    faults += [f"docs/README.md: no link to {page.name}" for page in sorted(root.glob("docs/*.md"))
               if page.name != "README.md" and page.name not in index]
    if faults:
        raise SystemExit("\n".join(faults))
    print(len(pages), "pages")


main(Path(sys.argv[1]))

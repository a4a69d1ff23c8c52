#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Every test and script that docs/quality.md and docs/security.md name exists, and every fuzz target has its row of
# figures.
#   check_quality_page.sh SOURCE_DIR
set -euo pipefail
cd "${1:?usage: check_quality_page.sh SOURCE_DIR}"

missing=0
for test in $(grep -ohE '[a-z0-9_/]+_test\b' docs/quality.md docs/security.md | sort -u); do
    if [ ! -f "tests/${test#tests/}.cpp" ]; then
        echo "no such test below tests/: $test" >&2
        missing=1
    fi
done
for script in $(grep -ohE 'scripts/[a-z0-9-]+' docs/quality.md docs/security.md | sort -u); do
    if [ ! -x "$script" ]; then
        echo "no such script: $script" >&2
        missing=1
    fi
done
for source in fuzz/*_fuzz.cpp; do
    target=$(basename "$source" .cpp)
    if ! grep -qF "| \`$target\` |" docs/quality.md; then
        echo "no figures in the fuzz table: $target" >&2
        missing=1
    fi
done
exit $missing

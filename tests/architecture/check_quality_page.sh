#!/usr/bin/env bash
# Every test and script that docs/quality.md names exists.
#   check_quality_page.sh SOURCE_DIR
set -euo pipefail
cd "${1:?usage: check_quality_page.sh SOURCE_DIR}"

missing=0
for test in $(grep -oE '[a-z0-9_]+_test\b' docs/quality.md docs/security.md | cut -d: -f2 | sort -u); do
    if [ -z "$(find tests -name "$test.cpp")" ]; then
        echo "no such test: $test" >&2
        missing=1
    fi
done
for script in $(grep -ohE 'scripts/[a-z-]+' docs/quality.md docs/security.md | sort -u); do
    if [ ! -x "$script" ]; then
        echo "no such script: $script" >&2
        missing=1
    fi
done
exit $missing

#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# The release script, on a small repository with stand-ins for the long steps: what it refuses, what --dry-run says and
# leaves alone, and what a release holds.
#   release_test.sh SOURCE_DIR
set -euo pipefail
source=${1:?usage: release_test.sh SOURCE_DIR}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export GNUPGHOME=$work/gnupg HOME=$work GIT_CONFIG_GLOBAL=/dev/null GIT_CONFIG_SYSTEM=/dev/null
mkdir -m 700 "$GNUPGHOME"
mkdir -p "$work/tree/scripts"
cd "$work/tree"
git init -q -b main
git config user.name Tester
git config user.email tester@example.com

cp "$source/scripts/release" scripts
stand_in() {
    printf '#!/bin/sh\necho "ran %s $*"\n%s\n' "$1" "${2:-}" >"scripts/$1"
    chmod +x "scripts/$1"
}
stand_in test 'echo "engines are $OVERLAY_ENGINES"'
stand_in abi
stand_in test-package
stand_in package 'mkdir -p build/packages; echo deb >build/packages/a.deb; echo {} >build/packages/a.spdx.json'
echo /build/ >.gitignore
echo 'project(stanag_overlay VERSION 1.2.0 LANGUAGES CXX' >CMakeLists.txt

# changelog HEADING: commits one whose first section has this heading
changelog() {
    printf '# Changelog\n\n%s\n\n- A new thing.\n- Another.\n\n## 1.1.0, 2026-01-01\n\n- Old.\n' "$1" >CHANGELOG.md
    git add -A
    git commit -q --allow-empty -m "$1"
}

# refused TEXT [ARGUMENT]: the script fails and says TEXT
refused() {
    if said=$(scripts/release "${@:2}" 2>&1); then
        echo "not refused: $1" >&2
        exit 1
    fi
    grep -qF -- "$1" <<<"$said" || { echo "expected '$1', got: $said" >&2; exit 1; }
    [ ! -e build ]
}

# says TEXT: the last output holds this line
says() {
    grep -qxF -- "$1" <<<"$said" || { echo "no line '$1' in: $said" >&2; exit 1; }
}

changelog '## 1.3.0, 2026-02-02'
refused "CHANGELOG.md: its first section is '## 1.3.0, 2026-02-02', not '## 1.2.0, YYYY-MM-DD'"
changelog '## 1.2.0, unreleased'
refused "CHANGELOG.md: give version 1.2.0 the date of today in place of 'unreleased'"
touch forgotten
refused "the tree has changes" --dry-run
rm forgotten

git config --unset user.email
refused "git knows neither user.signingkey nor user.email" --dry-run
git config user.email tester@example.com

said=$(scripts/release --dry-run)
says "release: run all tests"
says "release: no earlier release of 1.x, so there is no ABI to compare with"
says "release: tag v1.2.0"
[ ! -e build ] && [ -z "$(git tag)" ]
! grep -q '^ran' <<<"$said"

changelog '## 1.2.0, 2026-02-02'
git tag v1.1.0
git tag v0.9.0
said=$(scripts/release)
says "ran test "
says "engines are required"
says "ran abi v1.1.0"
says "ran package --twice"
says "release: no secret key of tester@example.com, so nothing is signed"
cd build/release/1.2.0
[ "$(ls)" = "$(printf '%s\n' RELEASE_NOTES.md SHA256SUMS a.deb a.spdx.json stanag-overlay-1.2.0.tar.gz)" ]
sha256sum --check --quiet SHA256SUMS
[ "$(wc -l <SHA256SUMS)" -eq 4 ]
[ "$(cat RELEASE_NOTES.md)" = $'- A new thing.\n- Another.' ]
[ "$(tar -tf stanag-overlay-1.2.0.tar.gz | head -n 1)" = stanag-overlay-1.2.0/ ]
cd ../../..
[ "$(git for-each-ref --format='%(contents:subject)' refs/tags/v1.2.0)" = "Version 1.2.0" ]
rm -r build
refused "there is a tag v1.2.0 already" --dry-run

# With a key.
if command -v gpg >/dev/null; then
    gpg --batch --quiet --passphrase '' --quick-generate-key tester@example.com default default 2>/dev/null
    git tag -d v1.2.0 >/dev/null
    said=$(scripts/release 2>&1)
    says "release: sign SHA256SUMS"
    gpg --batch --quiet --verify build/release/1.2.0/SHA256SUMS.asc build/release/1.2.0/SHA256SUMS 2>/dev/null
    git tag --verify v1.2.0 >/dev/null 2>&1
else
    echo "left out: releases with a key, as gpg is not installed (gnupg)"
fi
echo "releases are refused, tried, written and signed"

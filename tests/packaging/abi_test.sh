#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# The ABI check lets a new function pass and finds a changed class: SwString with one member more, and with one function less.
#   abi_test.sh SOURCE_DIR CXX
set -euo pipefail
source=${1:?usage: abi_test.sh SOURCE_DIR CXX}
cxx=${2:?usage: abi_test.sh SOURCE_DIR CXX}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# library NAME EDIT: a library of SwString alone, its source and header changed by the sed script EDIT
library() {
    mkdir "$work/$1"
    cp "$source"/framework/*.h "$source"/framework/SwString.cpp "$work/$1"
    sed -i "$2" "$work/$1/SwString.h" "$work/$1/SwString.cpp"
    [ -z "$2" ] || ! cmp -s "$work/$1/SwString.h" "$source/framework/SwString.h"
    (cd "$work/$1" && "$cxx" -std=c++20 -g -fPIC -shared -Wl,-soname,libsw_framework.so.1 SwString.cpp -o library.so)
}

# compare NAME: whether that library can take the place of the unchanged one
compare() {
    "$source/scripts/abi" "$work/old/library.so" "$work/old" "$work/$1/library.so" "$work/$1"
}

# refused NAME TEXT: it cannot, and the report holds TEXT
refused() {
    if found=$(compare "$1"); then
        echo "$1: found compatible" >&2
        exit 1
    fi
    grep -qF -- "$2" <<<"$found" || { echo "$1: the report does not say '$2': $found" >&2; exit 1; }
}

library old ''
library added_function '/^class SwString {/i class SwNew { public: int twice(int); };
s/^SwString SwString::trimmed/int SwNew::twice(int x) { return x + x; }\n&/'
library added_member 's/^    std::string text_;/&\n    int oneMore_ = 0;/'
library removed_function 's/\btrimmed\b/trimmedText/g'

compare old
compare added_function
refused added_member "'int oneMore_'"
refused removed_function 'SwString::trimmed'
echo "a changed class and a missing function are found"

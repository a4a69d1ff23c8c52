#!/bin/sh
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# The plugin is found through its static initialiser: it exports no symbol, so that it shares none with other
# plugins by accident, and nothing keeps it in the process after unloading.
#   check_exports.sh NM LIBRARY
set -eu
exported=$("$1" -D --defined-only "$2")
if [ -n "$exported" ]; then
    echo "$2 exports:"
    echo "$exported"
    exit 1
fi
echo "no exported symbols"

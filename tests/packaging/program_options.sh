#!/bin/sh
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# For the tests beside this, which source it: what a program says of itself that it takes.

# program_commands PROGRAM: one a line
program_commands() {
    "$1" --help | sed -n '/^Subcommands:/,$ s/^  \([a-z][a-z]*\) .*/\1/p'
}

# program_options PROGRAM [COMMAND]: its options in all spellings, one a line
program_options() {
    "$@" --help | sed -nE 's/^  (-[^ ]*).*/\1/p' | tr , '\n' | LC_ALL=C sort
}

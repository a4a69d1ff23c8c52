#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# What bash, zsh and fish offer is what the program takes: its commands, and for each command its options.
#   completions_test.sh PROGRAM FOLDER_OF_COMPLETIONS
set -euo pipefail
program=${1:?usage: completions_test.sh PROGRAM FOLDER}
folder=${2:?usage: completions_test.sh PROGRAM FOLDER}
. "$(dirname "$0")/program_options.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/home" "$work/clips"
export HOME=$work/home
cd "$work/clips"
touch clip.ts overlay.json

# in_bash WORD...: what is offered in place of the last word, one a line
in_bash() {
    bash -uc 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _stanag_overlay
        printf "%s\n" "${COMPREPLY[@]}"' bash "$folder/stanag-overlay.bash" "$@" | sed '/^$/d'
}

in_fish() {
    fish --no-config -c 'source $argv[1]; complete -C "$argv[2]"' "$folder/stanag-overlay.fish" "$*" | cut -f 1
}

# What zsh is told to offer: the specifications that the completion hands to zsh's own functions, their options only.
in_zsh() {
    zsh -f -c '
        _arguments() { print -rl -- "$@"; }
        _describe() { print -rl -- "${(@P)argv[-1]}"; }
        complete_now() { source "$file"; }
        file=$1; shift; words=("$@"); CURRENT=$#
        complete_now' zsh "$folder/_stanag-overlay" "$@" | sed -E 's/^\([^)]*\)//; s/(\[|:).*//'
}

# same WHAT EXPECTED ACTUAL: two lists, in any order
same() {
    diff <(LC_ALL=C sort <<<"$2") <(LC_ALL=C sort <<<"$3") || { echo "differs: $1" >&2; exit 1; }
}

commands=$(program_commands "$program")
same "bash, commands" "$commands" "$(in_bash stanag-overlay '' | grep -v '^-')"
same "fish, commands" "$commands" "$(in_fish stanag-overlay '')"
same "zsh, commands" "$commands" "$(in_zsh stanag-overlay '' | grep -v '^-')"
for command in '' $commands; do
    options=$(program_options "$program" $command)
    same "bash, $command" "$options" "$(in_bash stanag-overlay $command - | grep '^-')"
    same "zsh, $command" "$options" "$(in_zsh stanag-overlay $command - | grep '^-')"
    # A single dash offers fish's short options too.
    same "fish, $command" "$options" "$( (in_fish stanag-overlay $command -; in_fish stanag-overlay $command --) | sort -u)"
done

same "a beginning" $'--telemetry\n--telemetry-offset\n--telemetry-wait' "$(in_bash stanag-overlay burn clip.ts --tel)"
same "a command's beginning" $'schema\nsample' "$(in_bash stanag-overlay s)"
same "files for INPUT" $'clip.ts\noverlay.json' "$(in_bash stanag-overlay burn '')"
same "files for -c" overlay.json "$(in_bash stanag-overlay burn clip.ts -c o)"
same "an encoder" ffv1 "$(in_bash stanag-overlay burn clip.ts --video-codec ff)"
same "nothing for a number" '' "$(in_bash stanag-overlay burn clip.ts --crf '')"
same "nothing for an unknown command" $'-h\n--help' "$(in_bash stanag-overlay brun -)"
echo "bash, zsh and fish offer what the program takes"

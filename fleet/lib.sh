# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# What the scripts of this folder share; sourced, never run.

# Every place of one clip follows from the output folder and the clip's file name:
#   OUT/NAME                 the annotated clip
#   OUT/summaries/NAME.json  what the burn told
#   OUT/summaries/NAME.configuration  the sum of the configuration that it was given
#   OUT/logs/NAME.log        what it said, one part for each attempt
# NAME is the clip's own, or with FLEET_ENDING its name with that ending instead of its own, or FLEET_NAME.

# fail TEXT: ends the script with exit code 2; the caller was wrong.
fail() {
    echo "${0##*/}: $1" >&2
    exit 2
}

# one_line WHAT TEXT: refuses texts that would fall apart in lists and tables.
one_line() {
    [[ $2 != *[[:cntrl:]]* ]] || fail "$1 ${2@Q} holds a line feed or another control character; rename it"
}

# need_file WHAT PATH
need_file() {
    one_line "$1" "$2"
    if [ ! -f "$2" ] || [ ! -r "$2" ]; then fail "$1 ${2@Q} is no file that can be read"; fi
}

# need_command NAME PACKAGE
need_command() {
    command -v "$1" >/dev/null || fail "$1 is not installed; it is in the package $2"
}

# program: the overlay program, which FLEET_PROGRAM may name.
program() {
    printf '%s' "${FLEET_PROGRAM:-stanag-overlay}"
}

need_program() {
    command -v "$(program)" >/dev/null ||
        fail "$(program) is not there; install it, or name it by FLEET_PROGRAM"
}

# absolute PATH: what names the same file wherever a job starts.
absolute() {
    case $1 in
        /*) printf '%s' "$1" ;;
        *) printf '%s/%s' "$PWD" "$1" ;;
    esac
}

# output_name CLIP: sets REPLY to the name of its output. No process is started for it: there are many clips.
output_name() {
    REPLY=${FLEET_NAME:-${1##*/}}
    if [ -n "${FLEET_ENDING:-}" ]; then
        [[ $REPLY != ?*.* ]] || REPLY=${REPLY%.*}
        REPLY+=.$FLEET_ENDING
    fi
}

# read_list LIST: its lines become the array `clips`; refuses what could not be told apart.
read_list() {
    need_file "the list" "$1"
    clips=()
    local line number=0
    local -A taken=()
    while IFS= read -r line || [ -n "$line" ]; do
        number=$((number + 1))
        [ -n "$line" ] || fail "$1: line $number is empty"
        [[ $line != *[[:cntrl:]]* ]] || fail "$1: line $number holds a control character: ${line@Q}; rename the clip"
        output_name "$line"
        [ -z "${taken[$REPLY]:-}" ] ||
            fail "$1: line $number: ${line@Q} would replace the output of line ${taken[$REPLY]}; use two lists and folders"
        taken[$REPLY]=$number
        clips+=("$line")
    done <"$1"
    [ ${#clips[@]} -gt 0 ] || fail "$1: lists no clip"
}

# configuration_sum CONFIG: of what it says. Its time tells nothing: an engine may copy it anew for each task.
configuration_sum() {
    sha256sum <"$1" | cut -d ' ' -f 1
}

# is_done CLIP CONFIGURATION_SUM OUT: whether its output is there, whole, made with that configuration, and not older than
# the clip.
is_done() {
    output_name "$1"
    local output=$3/$REPLY summary=$3/summaries/$REPLY.json made_with=$3/summaries/$REPLY.configuration
    [ -s "$output" ] && [ -s "$summary" ] && [[ $(<"$summary") == *$'\n  "exitCode": 0,\n'* ]] &&
        [ -s "$made_with" ] && [ "$(<"$made_with")" = "$2" ] && [ ! "$1" -nt "$output" ]
}

# number NAME: sets REPLY to the member of the text in `json`; 0 when it is not there.
number() {
    REPLY=0
    [[ ! $json =~ \"$1\":\ ([0-9.e+-]+) ]] || REPLY=${BASH_REMATCH[1]}
}

# error_text: sets REPLY to why it failed, in the words of the text in `json`.
error_text() {
    REPLY=
    [[ $json =~ $'\n  "error": "'([^$'\n']*)$'",\n' ]] || return 0
    local text=${BASH_REMATCH[1]}
    text=${text//\\\\/$'\1'}
    text=${text//\\\"/\"}
    text=${text//\\[nrt]/ }
    REPLY=${text//$'\1'/\\}
}

# last_words LOG: the exit code and the last line that a process has left which could not tell more.
last_words() {
    [ -s "$1" ] || return 0
    tail -n 20 -- "$1" | awk '
        /^== exit code [0-9]+$/ { code = $4; next }
        /^== /                  { code = ""; text = ""; next }
                                { text = $0 }
        END { sub(/^[a-z-]*: /, "", text); print code "|" text }'
}

# recall NAME OUT: sets `json`, `code` and `attempts` to what summary and log hold of the clip with that output.
recall() {
    local summary=$2/summaries/$1.json
    log=$2/logs/$1.log json='' attempts=0
    [ ! -s "$summary" ] || json=$(<"$summary")
    [ ! -s "$log" ] || attempts=$(grep -c '^== [0-9].* on ' -- "$log" || true)
    number exitCode
    code=$REPLY
}

# explain: after recall, of a clip that is not done: sets `reason`, and `code` where no summary told it.
explain() {
    if [ "$attempts" -eq 0 ]; then
        reason="was never begun" code=
    elif [ -n "$json" ] && [ "$code" -ne 0 ]; then
        error_text
        reason=${REPLY:-was interrupted}
    elif [ -n "$json" ]; then
        reason="its output is gone, older than the clip, or made with another configuration"
    else
        IFS='|' read -r code reason <<<"$(last_words "$log")"
        if [ -z "$code" ]; then
            reason="was killed with its job or its node"
        elif [ "$code" -gt 128 ]; then
            reason="was killed by signal $((code - 128))${reason:+: $reason}"
        fi
    fi
}

# requeue_when_killed CODE: for a task of a job array. Killed by a signal, for want of memory or by somebody: that may go
# well the next time. What is wrong with a clip or the command line stays wrong.
requeue_when_killed() {
    local most_restarts=3
    if [ "$1" -gt 128 ] && [ "${SLURM_RESTART_COUNT:-0}" -lt "$most_restarts" ]; then
        echo "exit code $1: queued again"
        scontrol requeue "${SLURM_ARRAY_JOB_ID}_$SLURM_ARRAY_TASK_ID"
        sleep 60 # the requeue ends this script
    fi
}

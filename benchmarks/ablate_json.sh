#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Reads JSON without each of the framework's quick ways in turn and writes what it costs into benchmarks/README.md. Each
# of them is taken out of a copy of the sources; the benchmark runs with the library that is made of it.
#   benchmarks/ablate_json.sh BUILD_DIR
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:?"usage: benchmarks/ablate_json.sh BUILD_DIR"}" && pwd)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The name under which the benchmark looks for the library.
library=$(ldd "$build/bin/json_benchmark" | sed -n 's/^\s*\(libsw_framework[^ ]*\).*/\1/p')
read -ra compiler <<<"${CMAKE_CXX_COMPILER_LAUNCHER:-} c++"

# build_library FOLDER: of the sources in FOLDER/framework, those that have no newer object.
build_library() {
    local source
    for source in "$1"/framework/*.cpp; do
        # An object that came along with unchanged sources is taken as it is.
        [ ! "$source.o" -nt "$source" ] || continue
        # As the release preset does.
        "${compiler[@]}" -std=c++20 -O3 -DNDEBUG -fPIC -fvisibility-inlines-hidden -fno-semantic-interposition -fno-plt \
            -ffp-contract=off -c "$source" -o "$source.o"
    done
    c++ -shared -Wl,-Bsymbolic-functions "$1"/framework/*.o -lcrypto -o "$1/$library"
}

# instructions FOLDER TEXT COUNT: that so many readings of a text need, the program around them included.
instructions() {
    LD_LIBRARY_PATH="$1" valgrind --tool=callgrind --callgrind-out-file=/dev/null "$build/bin/json_benchmark" \
        --iterations="$3" --benchmark_filter="^read/framework/$2" 2>&1 >/dev/null |
        sed -n 's/.*Collected : \([0-9]*\).*/\1/p'
}

# each FOLDER TEXT FEW MANY: instructions of one reading.
each() { echo $((($(instructions "$1" "$2" "$4") - $(instructions "$1" "$2" "$3")) / ($4 - $3))); }

# measure NAME FOLDER: one row of the table; the first row's figures are what the others are compared with.
measure() {
    local payload configuration
    payload=$(each "$2" payload 100 300)
    configuration=$(each "$2" configuration 2 4)
    payload_of_all=${payload_of_all:-$payload}
    configuration_of_all=${configuration_of_all:-$configuration}
    echo "| $1 | $payload | $(percent "$payload" "$payload_of_all") | $configuration |" \
        "$(percent "$configuration" "$configuration_of_all") |"
}

percent() { awk -v part="$1" -v whole="$2" 'BEGIN { printf "%+.0f %%", 100 * part / whole - 100 }'; }

# without NAME FILE EXPRESSION: a row for the sources with that file changed by sed.
without() {
    local folder="$work/variant"
    rm -rf "$folder"
    cp -rp "$work/all" "$folder"
    sed -i "$3" "$folder/framework/$2"
    # A changed header concerns every unit.
    case $2 in *.h) rm "$folder"/framework/*.o ;; *) rm "$folder/framework/$2.o" ;; esac
    if cmp -s "$root/framework/$2" "$folder/framework/$2"; then
        echo "benchmarks/ablate_json.sh: nothing changes in $2 for: $1" >&2
        exit 1
    fi
    build_library "$folder"
    measure "$1" "$folder"
}

{
    echo "Machine: $(LC_ALL=C lscpu | sed -n 's/^Model name: *//p'), $(nproc) processors,"
    echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(c++ --version | head -n 1)."
    echo "Command: \`benchmarks/ablate_json.sh BUILD_DIR\`. Instructions of one reading, counted by callgrind: the"
    echo "differences are smaller than what else runs on a shared machine does to times."
    echo
    echo "| without | payload | more | configuration | more |"
    echo "| --- | ---: | ---: | ---: | ---: |"
    mkdir "$work/all"
    cp -r "$root/framework" "$work/all/"
    build_library "$work/all"
    measure "nothing: all of them" "$work/all"
    without "chunks: each container has memory of its own" SwJsonMemory.cpp \
        's/current != nullptr && whole/current == nullptr \&\& false \&\& whole/'
    without "the spare chunk: all of them go back" SwJsonMemory.cpp 's/!spare.isGone &&/false \&\&/'
    without "room on the stack for what waits" SwJsonBuilder.cpp \
        's/room_(firstRoom_.data(), firstRoom_.size())/room_(firstRoom_.size())/'
    without "the order of the last object: each is sorted" SwJsonBuilder.cpp \
        's/last.count == count ? last.places.data() : nullptr/nullptr/'
    without "prefixes: names are compared whole" SwJsonBuilder.cpp 's/{prefixOf(member->name), member}/{0, member}/'
    without "containers that destroy each other: always the long way" SwJsonTree.cpp 's/kPlainLevels = 32/kPlainLevels = 0/'
    without "strings by sixteen bytes: byte by byte" sw_json_scan.h 's/ifdef __SSE2__/if 0/'
    without "short doubles by a division: all by from_chars" sw_json_scan.h \
        's/if (end - start > kMostBytes/if (end >= start || end - start > kMostBytes/'
} | "$root/scripts/write-section" "$root/benchmarks/README.md" ablation

#!/usr/bin/env bash
# Reads JSON without each of the framework's quick ways in turn and writes what it costs into benchmarks/README.md. Each
# of them is taken out of a copy of the sources; the benchmark runs with the library that is made of it.
#   benchmarks/ablate_json.sh BUILD_DIR [options of Google Benchmark]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:?"usage: benchmarks/ablate_json.sh BUILD_DIR"}" && pwd)
shift
options=("$@")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
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
    c++ -shared -Wl,-Bsymbolic-functions "$1"/framework/*.o -lcrypto -o "$1/libsw_framework.so"
}

# ratio TABLE ROW: how many times faster; "us" instead of a row's column gives our time.
cell() { awk -F'|' -v row=" $2 " -v column="$3" '$2 == row { gsub(/ /, "", $column); print $column }' "$1"; }

# measure NAME FOLDER: one row of the table.
measure() {
    LD_LIBRARY_PATH="$2" "$build/bin/json_benchmark" --table="$2/table" \
        --benchmark_filter='^read/(framework|rapidjson_dom|nlohmann)/' --benchmark_repetitions=9 \
        --benchmark_min_time=0.1 --benchmark_enable_random_interleaving=true \
        --benchmark_report_aggregates_only=true "${options[@]}" >/dev/null 2>&1
    echo "| $1 | $(cell "$2/table" 'read the payload, against rapidjson_dom' 6) |" \
        "$(cell "$2/table" 'read the payload, against rapidjson_dom' 3) |" \
        "$(cell "$2/table" 'read the configuration, against nlohmann' 3) |"
}

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
    echo "Command: \`benchmarks/ablate_json.sh BUILD_DIR\`. Medians of processor time."
    echo
    echo "| without | payload, us | times RapidJSON | configuration, times nlohmann |"
    echo "| --- | ---: | ---: | ---: |"
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
    without "strings by sixteen bytes: byte by byte" sw_json_scan.h 's/ifdef __SSE2__/if 0/'
    without "short doubles by a division: all by from_chars" sw_json_scan.h \
        's/if (end - start > kMostBytes/if (end >= start || end - start > kMostBytes/'
} | "$root/scripts/write-section" "$root/benchmarks/README.md" ablation

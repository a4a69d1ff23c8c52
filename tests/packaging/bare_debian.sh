#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Runs inside of the bare Debian that scripts/test-package makes: /packages has the packages, /results is kept.
set -euo pipefail

say() {
    echo "test-package: $*"
}

# as_user COMMAND: in a shell of a user without rights
as_user() {
    runuser -u pilot -- env -i PATH=/usr/bin:/bin HOME=/home/pilot LC_ALL=C.UTF-8 bash -euc "cd; $1"
}

# All files but those of this test and those by which apt and dpkg keep their books.
files() {
    find / -xdev \( -path /proc -o -path /dev -o -path /packages -o -path /results -o -path /tmp -o -path /home/pilot \
        -o -path /var/lib/apt -o -path /var/cache/apt -o -path /var/lib/dpkg -o -path /var/log \) -prune -o -print |
        LC_ALL=C sort
}

# older DEB FOLDER: the package with version 0.9 and everything else as it is, into the folder
older() {
    local tree
    tree=$(mktemp -d)
    dpkg-deb --raw-extract "$1" "$tree"
    sed -i "s/$(dpkg-deb --field "$1" Version)/0.9/g" "$tree/DEBIAN/control"
    dpkg-deb --root-owner-group -Znone --build "$tree" "$2" >/dev/null
    rm -rf "$tree"
}

# versions: those of our packages, each once
versions() {
    dpkg-query --show --showformat='${Version}\n' $ours | sort -u
}

ours=$(for deb in /packages/*.deb; do dpkg-deb --field "$deb" Package; done)
apt-get update -qq
useradd --create-home pilot
files >/tmp/before

say "installing the program, the element and what they need"
apt-get install -y -qq --no-install-recommends /packages/stanag-overlay_*.deb /packages/stanag-overlay-plugin_*.deb \
    /packages/libsw-framework1_*.deb /packages/gstreamer1.0-stanag-overlay_*.deb gstreamer1.0-tools >/tmp/apt.log 2>&1 ||
    { cat /tmp/apt.log; exit 1; }
say "$(as_user 'stanag-overlay --version')"

config=/usr/share/stanag-overlay/examples/full_screen_hud.json
as_user 'stanag-overlay sample flight.ts --seconds 3 --size 1280x720'
as_user "stanag-overlay burn flight.ts -c $config -o annotated.ts --no-progress"
as_user "stanag-overlay frame flight.ts -c $config --at 2 -o flight.png"
[ "$(as_user 'stanag-overlay keys annotated.ts | wc -l')" -gt 0 ]
as_user "stanag-overlay text flight.ts -c $config --to 0.1" >/tmp/text
grep -q '"draws": \[{"text": ' /tmp/text
as_user 'gst-inspect-1.0 stanagoverlay' >/tmp/element
grep -q config-file /tmp/element
cp /home/pilot/flight.png /home/pilot/annotated.ts /results
say "made a flight, burnt it and took a picture as user pilot; the element is found"

say "installing the development packages and building the example host"
apt-get install -y -qq --no-install-recommends /packages/*.deb cmake make g++ >/tmp/apt.log 2>&1 ||
    { cat /tmp/apt.log; exit 1; }
as_user 'cp -r /usr/share/doc/stanag-overlay-dev/examples/minimal_host . && cmake -S minimal_host -B build-host >/dev/null &&
    cmake --build build-host >/dev/null'
as_user 'build-host/minimal_host /usr/lib/*/stanag-overlay/libstanag_overlay_plugin.so' | tee /tmp/host
grep -qx 'StanagOverlayPlugin changed [1-9][0-9]* of 921600 pixels' /tmp/host

say "going back to the same packages as version 0.9, and upgrading them"
version=$(versions)
mkdir /tmp/older
for deb in /packages/*.deb; do
    older "$deb" /tmp/older
done
apt-get install -y -qq --no-install-recommends --allow-downgrades /tmp/older/*.deb >/tmp/apt.log 2>&1 ||
    { cat /tmp/apt.log; exit 1; }
[ "$(versions)" = 0.9 ]
apt-get install -y -qq --no-install-recommends /packages/*.deb >/tmp/apt.log 2>&1 || { cat /tmp/apt.log; exit 1; }
[ "$(versions)" = "$version" ]
for package in $ours; do
    [ -z "$(dpkg --verify "$package")" ]
done
as_user "stanag-overlay frame flight.ts -c $config --at 2 -o upgraded.png && cmp flight.png upgraded.png"

say "removing all"
{ apt-get purge -y -qq $ours cmake make g++ gstreamer1.0-tools && apt-get autoremove -y -qq --purge; } >/tmp/apt.log 2>&1 ||
    { cat /tmp/apt.log; exit 1; }
files >/tmp/after
if find / -xdev \( -path /proc -o -path /dev -o -path /packages -o -path /results -o -path /tmp -o -path /var/cache/apt \) \
    -prune -o -name '*stanag*' -print -o -name '*sw[-_]framework*' -print -o -name '*ZelvoTools*' -print | grep .; then
    say "these are left" >&2
    exit 1
fi
if ! diff /tmp/before /tmp/after; then
    say "the files are not those of before" >&2
    exit 1
fi
say "the files are those of before"

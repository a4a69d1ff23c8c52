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

# All files but those by which apt and dpkg keep their books.
files() {
    find / -xdev \( -path /proc -o -path /dev -o -path /packages -o -path /results -o -path /tmp -o -path /var/lib/apt \
        -o -path /var/cache/apt -o -path /var/lib/dpkg -o -path /var/log \) -prune -o -print | LC_ALL=C sort
}

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

say "removing all"
ours=$(for deb in /packages/*.deb; do dpkg-deb --field "$deb" Package; done)
apt-get purge -y -qq $ours cmake make g++ gstreamer1.0-tools >/tmp/apt.log 2>&1
apt-get autoremove -y -qq --purge >>/tmp/apt.log 2>&1
rm -rf /home/pilot/*
files | grep -v '^/home/pilot/' >/tmp/after
if find / -xdev \( -path /proc -o -path /dev -o -path /packages -o -path /results -o -path /tmp -o -path /var/cache/apt \) \
    -prune -o -name '*stanag*' -print -o -name '*sw[-_]framework*' -print -o -name '*ZelvoTools*' -print | grep .; then
    say "these are left" >&2
    exit 1
fi
say "files left that were not there before, of other packages:"
diff <(grep -v '^/home/pilot/' /tmp/before) /tmp/after | grep '^[<>]' || true
say "nothing of ours is left"

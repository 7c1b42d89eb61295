#!/bin/sh
# fetch_pulseaudio.sh DIRECTORY: unpacks a PulseAudio server into DIRECTORY, for the tests of what TollvaneLog does where
# there is no PipeWire. It cannot be installed, because its package excludes PipeWire's own ALSA plugin.
set -eu
[ $# -eq 1 ] || { echo "usage: $0 DIRECTORY" >&2; exit 64; }
[ -x "$1/usr/bin/pulseaudio" ] && exit 0
packages="pulseaudio liborc-0.4-0 libspeexdsp1 libwrap0 libltdl7 libtdb1 libsoxr0"
mkdir -p "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"
(cd "$work" && apt-get -qq -o APT::Sandbox::User=root download $packages)
for package in "$work"/*.deb; do dpkg -x "$package" "$1"; done
missing=$(LD_LIBRARY_PATH="$(dirname "$(find "$1" -name 'libpulsecore-*.so')"):$(find "$1" -name 'libltdl.so*' -printf '%h\n' -quit)" \
  ldd "$1/usr/bin/pulseaudio" | grep 'not found' || true)
[ -z "$missing" ] || { echo "$0: PulseAudio would not start here: $missing" >&2; rm -rf "$1"; exit 1; }

#!/bin/sh
# Draws the PNG icons from bell.svg. Run it after a change of that file. Needs rsvg-convert.
set -eu
cd "$(dirname "$0")"
for size in 16 32 48 128; do
  rsvg-convert --width="$size" --height="$size" --output="bell-$size.png" bell.svg
done

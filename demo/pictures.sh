#!/usr/bin/env bash
# Makes the README's pictures of bell and tooltip from the screenshots of demo.sh:
#   pictures.sh SCREENSHOTS OUTPUT
set -euo pipefail
screenshots=$1
output=$2
mkdir -p "$output"

tiles=()
for name in bell-dark bell-fill-dark bell-light bell-fill-light; do
  tiles+=("(" "$screenshots/$name.png" -crop 28x28+772+0 +repage -filter point -resize 500% ")")
done
convert "${tiles[@]}" +append -strip PNG24:"$output/bell.png"
convert "$screenshots/tooltip-after.png" -crop 380x100+420+0 +repage -filter Lanczos -resize 200% -strip \
  PNG24:"$output/tooltip.png"

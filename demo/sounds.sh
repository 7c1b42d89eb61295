# Makes what the demo plays: sound files, a sound theme, and a notification service that plays a sound for each
# notification. demo.sh sources this file.
# shellcheck shell=bash disable=SC2154

make_sounds() {
  local i
  for i in 1 2 3 4 5; do
    sox -n -r 48000 -b 16 -c 2 "$root/tone$i.wav" synth 0.4 sine $((330 + 110 * i)) fade 0.02 0.4 0.1 vol 0.3
  done
  sox -n -r 48000 -b 16 -c 2 "$root/ring.wav" synth 0.3 sine 1320 fade 0.01 0.3 0.2 vol 0.3
  # A sound theme with one sound, for the program that plays event sounds by name.
  local theme=$home/.local/share/sounds/freedesktop
  mkdir -p "$theme/stereo"
  cp "$root/ring.wav" "$theme/stereo/bell.wav"
  printf '[Sound Theme]\nName=Default\nDirectories=stereo\n\n[stereo]\nOutputProfile=stereo\n' >"$theme/index.theme"
}

# Makes an application that sends notifications, and starts the service that plays a sound for them.
serve_notifications() {
  mkdir -p "$home/.local/share/applications"
  cat >"$home/.local/share/applications/parcel-watch.desktop" <<'END_OF_ENTRY'
[Desktop Entry]
Type=Application
Name=Parcel Watch
Exec=parcel-watch
END_OF_ENTRY
  printf '#!/bin/sh\nexec paplay "%s/ring.wav"\n' "$root" >"$root/ring.sh"
  chmod +x "$root/ring.sh"
  session start notifications "$root/ring.sh"
}

#!/usr/bin/env bash
# Shows Tollvane at work, even on a machine without desktop and sound card. Starts a private X server with a panel and a
# private sound server with a null sink. Then lets real programs play, and a browser's tab if a browser is installed,
# and prints what Tollvane heard.
#
#   demo.sh BUNDLE OUTPUT     BUNDLE: the directory with Tollvane in it; OUTPUT: a directory for the pictures
#
# Ends with 0 only if every sound was heard exactly once, with the right kind and name, and the bell showed it. Does not
# touch the user's own session, and stops everything that it started.
set -euo pipefail

if [ $# -ne 2 ] || [ ! -x "$1/Tollvane" ]; then
  echo "usage: demo.sh BUNDLE OUTPUT (BUNDLE holds the program Tollvane)" >&2
  exit 2
fi
here=$(cd "$(dirname "$0")" && pwd)
bundle=$(realpath "$1")
mkdir -p "$2"
output=$(realpath "$2")

# shellcheck source=tests/session/client.sh
source "$here/../tests/session/client.sh"
# shellcheck source=demo/sounds.sh
source "$here/sounds.sh"
# shellcheck source=demo/browser.sh
source "$here/browser.sh"

for program in Xvfb dbus-daemon openbox xfce4-panel xfconf-query xdotool xprop scrot identify convert pipewire \
  wireplumber pipewire-pulse pactl pw-dump sox busctl setpriv pw-play paplay aplay canberra-gtk-play dunst \
  notify-send python3; do
  command -v "$program" >/dev/null || missing+=" $program"
done
if [ -n "${missing:-}" ]; then
  echo "demo: these programs are missing:$missing" >&2
  exit 2
fi

failures=0
fail() {
  echo "WRONG: $*"
  failures=$((failures + 1))
}

# --- What Tollvane heard ---------------------------------------------------------------------------------------------

history_file() { echo "$home/.local/share/Tollvane/history.txt"; }
heard() { if [ -f "$(history_file)" ]; then wc -l <"$(history_file)"; else echo 0; fi; }
heard_at_least() { [ "$(heard)" -ge "$1" ]; }
silence() { [ -z "$(pactl list short sink-inputs)" ]; }

printed=0
print_new_lines() {
  local line
  while IFS= read -r line; do
    printed=$((printed + 1))
    echo "  heard: ${line//$'\t'/  }"
  done < <(tail -n +$((printed + 1)) "$(history_file)" 2>/dev/null)
}

# expect KIND NAME-PATTERN COMMAND...: runs a command and checks that exactly one sound of this kind and name was heard,
# from the tab $tab, or without a tab if that is empty.
tab=
expect() {
  local kind=$1 pattern=$2 before line app
  shift 2
  before=$(heard)
  echo "playing: $1"
  "$@" >"$log/player.log" 2>&1 || fail "$1 could not play: $(tail -n 1 "$log/player.log")"
  poll 10 heard_at_least $((before + 1)) || fail "$1 was not heard"
  poll 10 silence || fail "$1 does not stop"
  print_new_lines
  [ "$(heard)" -le $((before + 1)) ] || fail "$1 was heard $(($(heard) - before)) times"
  line=$(tail -n +$((before + 1)) "$(history_file)" 2>/dev/null | head -n 1)
  [ -n "$line" ] || return 0
  app=$(cut -f2 <<<"$line")
  [ "$(cut -f3 <<<"$line")" = "$kind" ] || fail "$1 should be a \"$kind\": $line"
  # A tool that a script starts is named with the script, and this script starts them.
  [[ $app =~ ^($pattern)(\ \(demo\.sh\))?$ ]] || fail "$1 goes by the name \"$app\""
  [ "$(cut -f4 <<<"$line")" = "$tab" ] || fail "$1 should be of the tab \"$tab\": $line"
  [[ $line =~ ^[0-9]{4}-[0-9]{2}-[0-9]{2}\ [0-9]{2}:[0-9]{2}:[0-9]{2}$'\t' ]] || fail "not a line of history: $line"
  sounds=$((sounds + 1))
}
sounds=0

# --- What the bell shows ---------------------------------------------------------------------------------------------

bell_pixels() { convert "$1" -crop 32x26+768+0 +repage -format '%#' info:; }

take() { scrot --overwrite "$root/now.png" && sum=$(identify -format '%#' "$root/now.png"); }
settled() {
  local last=${sum:-}
  take && [ "$sum" = "$last" ]
}

# picture NAME: waits until the screen does not change any more, and takes a picture of it and an enlarged one of its
# bell.
picture() {
  sum=
  poll 10 settled || fail "the screen does not come to rest for $1"
  cp "$root/now.png" "$output/$1.png"
  convert "$root/now.png" -crop 64x26+736+0 +repage -filter point -resize 800% "$output/$1-enlarged.png"
}

bell_differs_from() {
  take && [ "$(bell_pixels "$root/now.png")" != "$(bell_pixels "$1")" ]
}

# bell_picture NAME TONE OTHER: takes a picture of the panel in this tone. Its bell must differ from that in picture OTHER.
bell_picture() {
  session tone "$2"
  poll 10 bell_differs_from "$output/$3.png" || fail "the bell of $1 looks like the one of $3"
  picture "$1"
}

toolTip_picture() {
  picture "$1"
  local before=$sum
  xdotool mousemove 780 14 mousemove_relative 2 0
  screen_changed() { take && [ "$sum" != "$before" ]; }
  poll 10 screen_changed || fail "no tooltip for $1"
  picture "$1"
  xdotool mousemove 300 200
}

# --- The demonstration -----------------------------------------------------------------------------------------------

item_registered() { watcher_property RegisteredStatusNotifierItems | grep -q "StatusNotifierItem-$tollvane-"; }
listens() {
  log_tool=$(pgrep -P "$tollvane" -x TollvaneLog) && pw-dump | grep -q "\"\(application.process.id\|pipewire.sec.pid\)\": \"\?$log_tool\b"
}

begin_session --sound pipewire --screen 800x300 --window-manager openbox --panel xfce4 --tone light
make_sounds
serve_notifications
picture panel-light
session tone dark
picture panel-dark

poll 10 bell_differs_from "$output/panel-light.png" || fail "the dark panel looks like the light one"

start tollvane "$bundle/Tollvane"
tollvane=$!
require 10 "Tollvane's bell in the panel" item_registered
require 10 "Tollvane listening" listens

bell_picture bell-light light panel-light
bell_picture bell-dark dark panel-dark
toolTip_picture tooltip-before

expect "started playing audio" "pw-play" pw-play "$root/tone1.wav"
expect "started playing audio" "paplay" paplay "$root/tone2.wav"
expect "started playing audio" "aplay" aplay -q "$root/tone3.wav"
expect "alert sound" "canberra-gtk-play" canberra-gtk-play --id=bell
expect "notification sound" "Parcel Watch" \
  notify-send --app-name=parcel-watch --hint=string:desktop-entry:parcel-watch "Parcel" "Your parcel is at the door"
if command -v mpv >/dev/null; then
  expect "started playing audio" "mpv|mpv Media Player" mpv --no-config --no-terminal --vo=null "$root/tone4.wav"
fi
if command -v play >/dev/null; then
  expect "started playing audio" "play|sox|SoX" play -q "$root/tone5.wav"
fi
browser=$(demo_browser)
if [ -n "$browser" ]; then
  serve_page "$root/tone4.wav"
  start_browser "$browser" "$bundle/Extensions"
  require 90 "the link with $browser" browser_is_linked
  tab="$page_title  (localhost)" expect "started playing audio" "Chromium.*|Firefox.*" browser_tab
  stop "$browser_pid"
else
  echo "No tab plays: there is no browser here (chromium or firefox-esr), or no python3."
fi
# One more sound: if a late repeat of a sound above comes, it is heard before this one and counted.
expect "started playing audio" "pw-play" pw-play "$root/tone1.wav"

toolTip_picture tooltip-after
bell_picture bell-fill-dark dark bell-dark
bell_picture bell-fill-light light bell-light

kill -0 "$tollvane" 2>/dev/null || fail "Tollvane has ended"
[ "$(heard)" -eq "$sounds" ] || fail "$sounds sounds were played, and $(heard) heard"
echo
echo "$sounds sounds played, $(heard) heard, $failures wrong. Pictures are in $output."
[ "$failures" -eq 0 ]

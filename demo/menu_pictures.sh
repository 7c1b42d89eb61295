#!/usr/bin/env bash
# Takes pictures of the menu under the bell in a real panel:
#   menu_pictures.sh BUILD OUT_DIR [x11|wayland]
# Each scenario is shown light and dark side by side, on X11 (xfce4-panel) and on Wayland (waybar in sway), and one
# scenario of each also at scale 2.
set -euo pipefail
build=$(realpath "$1")
mkdir -p "$2"
output=$(realpath "$2")
only=${3:-x11 wayland}
here=$(cd "$(dirname "$0")" && pwd)
probe=$build/tests/probes/menu_probe
pointer=$build/tests/probes/wayland_pointer
icons=$build/Tollvane/icons

# shellcheck source=tests/session/client.sh
source "$here/../tests/session/client.sh"
export TZ=UTC
work=$(mktemp -d "${TMPDIR:-/tmp}/tollvane-pictures-XXXXXX")
trap 'set +e; trap "" INT TERM HUP; end_session; rm -rf "$work"' EXIT

# start_probe SCENARIO SCHEME SCALE: starts menu_probe. Its standard input is descriptor 8, its output $log/probe.log.
start_probe() {
  rm -f "$root/orders" "$log/probe.log"
  mkfifo -m 666 "$root/orders"
  # Opened for reading and writing, so that the opening does not wait for the other end.
  exec 8<>"$root/orders"
  # shellcheck disable=SC2016
  ORDERS=$root/orders QT_SCALE_FACTOR=$3 start probe sh -c 'exec "$0" "$@" <"$ORDERS"' "$probe" "$icons" "$1"
  probe_pid=$!
  order "scheme $2"
}

order() {
  local before
  before=$(grep -cx obeyed "$log/probe.log" 2>/dev/null || true)
  before=${before:-0}
  echo "$1" >&8
  require 10 "an answer to $1" eval "[ \"\$(grep -cx obeyed '$log/probe.log')\" -gt $before ]"
}

printed() { grep -qs "^$1" "$log/probe.log"; }

# Whether two pictures in a row are the same.
settled() {
  look "$root/one.png"
  sleep 0.1
  look "$root/two.png"
  cmp -s "$root/one.png" "$root/two.png"
}

# bell_place SCALE: a checksum of the picture at the end of the bar, where the bell appears.
bell_place() {
  look "$root/bar.png"
  convert "$root/bar.png" -crop "$((30 * $1))x$((26 * $1))+$((970 * $1))+0" +repage rgb:- | md5sum
}
bell_is_drawn() { [ "$(bell_place "$1")" != "$empty_bar" ]; }
bell_is_gone() { [ "$(bell_place "$1")" = "$empty_bar" ]; }

# remember_bar SCALE: remembers what the bar looks like without a bell, with the pointer elsewhere.
remember_bar() {
  park
  require 10 "a still screen" settled
  empty_bar=$(bell_place "$1")
}

# take NAME SCENARIO SCHEME SCALE [SCALE_OF_THE_PROBE]: takes a picture into $work/NAME.png.
take() {
  start_probe "$2" "$3" "${5:-$4}"
  require 10 "the bell" shows_bell
  # A bar draws an icon a moment after it has accepted the registration.
  require 10 "the bell's icon" bell_is_drawn "$4"
  click_bell "$4"
  require 10 "the menu" printed opened
  if [ "$2" = fifty ]; then
    order submenu
    require 10 "the submenu" printed opened-below
  fi
  require 10 "a still screen" settled
  local width=540 height=440
  [ "$2" != fifty ] || width=800
  convert "$root/two.png" -gravity NorthEast -crop "$((width * $4))x$((height * $4))+0+0" +repage "$work/$1.png"
  exec 8>&-
  stop "$probe_pid"
  park
  require 10 "an empty panel" lacks_bell
  require 10 "a bar without the bell" bell_is_gone "$4"
}

# finish NAME PICTURE...: puts the pictures side by side into one small file.
finish() {
  local name=$1
  shift
  convert "$@" +append -strip +dither -colors 32 -define png:compression-level=9 "PNG8:$output/$name.png"
}

scenarios=(none five six fifty tabs hint update)
pair_up() {
  local scenario
  for scenario in "${scenarios[@]}"; do
    finish "$1-$scenario" "$work/$1-light-$scenario.png" "$work/$1-dark-$scenario.png"
  done
  finish "$1-tabs-2x" "$work/$1-dark-tabs-2x.png"
}

# --- X11 -------------------------------------------------------------------------------------------------------------

shows_bell() { watcher_property RegisteredStatusNotifierItems | grep -q StatusNotifierItem; }
lacks_bell() { ! shows_bell; }

# begin_x11 SCALE LIGHT_OR_DARK
begin_x11() {
  begin_session --screen 1000x760 --scale "$1" --window-manager openbox --panel xfce4 --tone "$2"
}

x11_pictures() {
  look() { scrot --overwrite "$1"; }
  click_bell() { xdotool mousemove $((985 * $1)) $((14 * $1)) click 1; }
  park() { xdotool mousemove 100 500; }
  local tone scenario
  for tone in light dark; do
    begin_x11 1 "$tone"
    remember_bar 1
    for scenario in "${scenarios[@]}"; do
      take "x11-$tone-$scenario" "$scenario" "$tone" 1
    done
    end_session
  done
  begin_x11 2 dark
  remember_bar 2
  take x11-dark-tabs-2x tabs dark 2
  end_session
  pair_up x11
}

# --- Wayland ---------------------------------------------------------------------------------------------------------

# begin_wayland SCALE: the bar is always dark, because without a desktop portal the bell cannot know of a light one.
begin_wayland() {
  begin_session --screen 1000x760 --scale "$1" --wayland sway --bar waybar
  rm -f "$root/moves" && mkfifo -m 666 "$root/moves"
  exec 9<>"$root/moves"
  # shellcheck disable=SC2016
  MOVES=$root/moves start pointer sh -c 'exec "$0" 1000 760 <"$MOVES"' "$pointer"
  require 10 "the pointer" grep -q ready "$log/pointer.log"
}

end_wayland() {
  exec 9>&-
  end_session
}

point() {
  local before
  before=$(grep -cx obeyed "$log/pointer.log" || true)
  echo "$1" >&9
  require 10 "the pointer's $1" eval "[ \"\$(grep -cx obeyed '$log/pointer.log')\" -gt $before ]"
}

wayland_pictures() {
  look() { in_session grim - >"$1"; }
  click_bell() {
    point "move 984 13"
    point "press 272"
    point "release 272"
  }
  park() { point "move 100 500"; }
  local tone scenario
  for tone in light dark; do
    begin_wayland 1
    remember_bar 1
    for scenario in "${scenarios[@]}"; do
      take "wayland-$tone-$scenario" "$scenario" "$tone" 1
    done
    end_wayland
  done
  begin_wayland 2
  remember_bar 2
  take wayland-dark-tabs-2x tabs dark 2 1
  end_wayland
  pair_up wayland
}

for kind in $only; do "${kind}_pictures"; done

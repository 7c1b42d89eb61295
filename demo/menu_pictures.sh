#!/usr/bin/env bash
# Pictures of the menu under the bell, as people see it in a panel:
#   menu_pictures.sh BUILD OUT_DIR [x11|wayland]
# each scenario light and dark beside each other, on X11 (xfce4-panel) and on Wayland (waybar in sway); one of each at
# twice the scale.
set -euo pipefail
build=$(realpath "$1")
mkdir -p "$2"
output=$(realpath "$2")
only=${3:-x11 wayland}
here=$(cd "$(dirname "$0")" && pwd)
probe=$build/tests/desktop/menu_probe
pointer=$build/tests/desktop/wayland_pointer
icons=$build/Tollvane/icons

# shellcheck source=private_session.sh
source "$here/private_session.sh"

start_bus() {
  mkdir -p "$root"/{log,config,data,state,cache}
  mkdir -m 700 -p "$root/run"
  unset WAYLAND_DISPLAY DISPLAY XAUTHORITY SESSION_MANAGER XDG_DATA_DIRS XDG_CONFIG_DIRS
  unset QT_QPA_PLATFORM QT_SCALE_FACTOR GDK_SCALE GTK_THEME
  export HOME=$root XDG_RUNTIME_DIR=$root/run XDG_CONFIG_HOME=$root/config XDG_DATA_HOME=$root/data \
    XDG_STATE_HOME=$root/state XDG_CACHE_HOME=$root/cache XDG_CURRENT_DESKTOP=XFCE NO_AT_BRIDGE=1 LANG=C.UTF-8 \
    TZ=UTC DBUS_SESSION_BUS_ADDRESS=unix:path=$root/run/bus
  start bus dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS"
  require 10 "the session bus" busctl --user list
}

# start_x11 SCALE LIGHT_OR_DARK
start_x11() {
  start_screen "$((1000 * $1))x$((760 * $1))"
  xsetroot -solid '#4f6272'
  write_panel_settings
  export GDK_SCALE=$1
  start_panel
  panel_tone "$2"
}

# start_probe SCENARIO SCHEME SCALE: its standard input is descriptor 8, its output $root/log/probe.log
start_probe() {
  rm -f "$root/orders" "$root/log/probe.log"
  mkfifo -m 666 "$root/orders"
  # Open for both, so that neither end waits for the other.
  exec 8<>"$root/orders"
  # shellcheck disable=SC2016
  ORDERS=$root/orders QT_SCALE_FACTOR=$3 "$starter" probe sh -c 'exec "$0" "$@" <"$ORDERS"' "$probe" "$icons" "$1"
  probe_pid=$!
  order "scheme $2"
}

order() {
  local before
  before=$(grep -cx obeyed "$root/log/probe.log" 2>/dev/null || true)
  before=${before:-0}
  echo "$1" >&8
  require 10 "an answer to $1" eval "[ \"\$(grep -cx obeyed '$root/log/probe.log')\" -gt $before ]"
}

printed() { grep -qs "^$1" "$root/log/probe.log"; }

# Until two looks in a row are the same.
settled() {
  look "$root/one.png"
  sleep 0.1
  look "$root/two.png"
  cmp -s "$root/one.png" "$root/two.png"
}

# bell_place SCALE: what the end of the bar looks like, where the bell belongs
bell_place() {
  look "$root/bar.png"
  convert "$root/bar.png" -crop "$((30 * $1))x$((26 * $1))+$((970 * $1))+0" +repage rgb:- | md5sum
}
bell_is_drawn() { [ "$(bell_place "$1")" != "$empty_bar" ]; }
bell_is_gone() { [ "$(bell_place "$1")" = "$empty_bar" ]; }

# remember_bar SCALE: without a bell, and with the pointer elsewhere
remember_bar() {
  park
  require 10 "a still screen" settled
  empty_bar=$(bell_place "$1")
}

# take NAME SCENARIO SCHEME SCALE [SCALE_OF_THE_PROBE]: a picture in $root/NAME.png
take() {
  start_probe "$2" "$3" "${5:-$4}"
  require 10 "the bell" shows_bell
  # A bar draws an icon later than it knows of it.
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
  convert "$root/two.png" -gravity NorthEast -crop "$((width * $4))x$((height * $4))+0+0" +repage "$root/$1.png"
  exec 8>&-
  stop "$probe_pid"
  park
  require 10 "an empty panel" lacks_bell
  require 10 "a bar without the bell" bell_is_gone "$4"
}

# finish NAME PICTURE...: side by side, small
finish() {
  local name=$1
  shift
  convert "$@" +append -strip +dither -colors 32 -define png:compression-level=9 "PNG8:$output/menu-$name.png"
}

scenarios=(none five six fifty tabs hint update)
pair_up() {
  local scenario
  for scenario in "${scenarios[@]}"; do
    finish "$1-$scenario" "$root/$1-light-$scenario.png" "$root/$1-dark-$scenario.png"
  done
  finish "$1-tabs-2x" "$root/$1-dark-tabs-2x.png"
}

# --- X11 -------------------------------------------------------------------------------------------------------------

shows_bell() { watcher_property RegisteredStatusNotifierItems | grep -q StatusNotifierItem; }
lacks_bell() { ! shows_bell; }

x11_pictures() {
  starter=start
  look() { scrot --overwrite "$1"; }
  click_bell() { xdotool mousemove $((985 * $1)) $((14 * $1)) click 1; }
  park() { xdotool mousemove 100 500; }
  local tone scenario
  for tone in light dark; do
    start_x11 1 "$tone"
    remember_bar 1
    for scenario in "${scenarios[@]}"; do
      take "x11-$tone-$scenario" "$scenario" "$tone" 1
    done
    leave_x11
  done
  start_x11 2 dark
  remember_bar 2
  take x11-dark-tabs-2x tabs dark 2
  leave_x11
  pair_up x11
}

leave_x11() {
  local i
  for ((i = ${#started[@]} - 1; i > 0; i--)); do stop "${started[i]}"; done
  started=("${started[0]}")
  unset DISPLAY GDK_SCALE
}

# --- Wayland ---------------------------------------------------------------------------------------------------------

# sway refuses to run as root.
as_user() {
  if [ "$(id -u)" = 0 ]; then
    setpriv --reuid 65534 --regid 65534 --clear-groups --pdeathsig KILL "$@"
  else
    "$@"
  fi
}

start_as_user() {
  local name=$1
  shift
  as_user "$@" >"$root/log/$name.log" 2>&1 </dev/null &
  started+=($!)
}

# start_wayland SCALE: the bar is dark, as nobody tells the bell of a light one here
start_wayland() {
  mkdir -p "$root/config/waybar"
  echo '{"layer": "top", "position": "top", "height": 26, "modules-right": ["tray"], "tray": {"spacing": 8}}' \
    >"$root/config/waybar/config"
  echo "* { font-family: sans-serif; } window#waybar { background: #2b2b2b; color: #f2f2f2; } #tray { padding: 0 8px; }" \
    >"$root/config/waybar/style.css"
  cat >"$root/config/sway" <<END
output HEADLESS-1 resolution $((1000 * $1))x$((760 * $1)) scale $1 background #4f6272 solid_color
xwayland disable
END
  [ "$(id -u)" != 0 ] || chown -R 65534:65534 "$root/run" "$root/config" "$root/data" "$root/state" "$root/cache"
  [ "$(id -u)" != 0 ] || chmod 755 "$root"
  rm -f "$root"/run/wayland-*
  export WLR_BACKENDS=headless WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman
  start_as_user sway sway -c "$root/config/sway"
  require 10 "sway" eval 'ls "$root"/run/wayland-*[0-9]'
  WAYLAND_DISPLAY=$(basename "$(ls "$root"/run/wayland-*[0-9])")
  export WAYLAND_DISPLAY
  start_as_user waybar waybar
  require 10 "waybar" eval 'as_user busctl --user get-property org.kde.StatusNotifierWatcher /StatusNotifierWatcher org.kde.StatusNotifierWatcher IsStatusNotifierHostRegistered | grep -q true'
  rm -f "$root/moves" && mkfifo -m 666 "$root/moves"
  exec 9<>"$root/moves"
  # shellcheck disable=SC2016
  MOVES=$root/moves start_as_user pointer sh -c 'exec "$0" 1000 760 <"$MOVES"' "$pointer"
  require 10 "the pointer" grep -q ready "$root/log/pointer.log"
}

point() {
  local before
  before=$(grep -cx obeyed "$root/log/pointer.log" || true)
  echo "$1" >&9
  require 10 "the pointer's $1" eval "[ \"\$(grep -cx obeyed '$root/log/pointer.log')\" -gt $before ]"
}

wayland_pictures() {
  watcher_property() {
    as_user busctl --user get-property org.kde.StatusNotifierWatcher /StatusNotifierWatcher org.kde.StatusNotifierWatcher "$1"
  }
  look() { as_user grim - >"$1"; }
  click_bell() {
    point "move 984 13"
    point "press 272"
    point "release 272"
  }
  park() { point "move 100 500"; }
  starter=start_as_user
  [ "$(id -u)" != 0 ] || start_bus_again
  local tone scenario
  for tone in light dark; do
    start_wayland 1
    remember_bar 1
    for scenario in "${scenarios[@]}"; do
      take "wayland-$tone-$scenario" "$scenario" "$tone" 1
    done
    leave_wayland
  done
  start_wayland 2
  remember_bar 2
  take wayland-dark-tabs-2x tabs dark 2 1
  leave_wayland
  pair_up wayland
}

# The session bus takes only its own user.
start_bus_again() {
  stop "${started[0]}"
  started=()
  chown -R 65534:65534 "$root/run"
  chmod 755 "$root"
  rm -f "$root/run/bus"
  start_as_user bus dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS"
  require 10 "the session bus" as_user busctl --user list
}

leave_wayland() {
  exec 9>&-
  leave_x11
  unset WAYLAND_DISPLAY
}

start_bus
for kind in $only; do "${kind}_pictures"; done

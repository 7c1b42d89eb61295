# A session of the demo's own: home, session bus, X server, panel, notification service and sound server.
# Sourced by demo.sh. Everything started here is stopped when the shell ends, however it ends.
# shellcheck shell=bash

root=$(mktemp -d "${TMPDIR:-/tmp}/tollvane-demo-XXXXXX")
started=()
panel_settings=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../tests/support/xfce4-panel.xml")

# start NAME COMMAND...: in the background, with a log; its id is in $! and it dies with this shell.
start() {
  local name=$1
  shift
  setpriv --pdeathsig KILL "$@" >"$root/log/$name.log" 2>&1 </dev/null &
  started+=($!)
}

# poll SECONDS CONDITION...: false when it still does not hold after that time.
poll() {
  local end=$((SECONDS + $1))
  shift
  until "$@" >/dev/null 2>&1; do
    [ "$SECONDS" -lt "$end" ] || return 1
    sleep 0.05
  done
}

# require SECONDS WHAT CONDITION...: the same, and gives up the whole demo.
require() {
  local seconds=$1 what=$2
  shift 2
  poll "$seconds" "$@" && return
  echo "demo: this did not come up: $what" >&2
  tail -n 5 "$root"/log/*.log >&2
  exit 1
}

# The processes that the bus or a program started on our behalf: they carry our runtime directory.
strays() {
  local environment pid
  for environment in /proc/[0-9]*/environ; do
    pid=${environment//[^0-9]/}
    if [ "$pid" != $$ ] && grep -qzxF "XDG_RUNTIME_DIR=$root/run" "$environment" 2>/dev/null; then
      echo "$pid"
    fi
  done
}

# A child that has ended stays known until it is waited for, so its state counts and not its id.
running() {
  local state
  state=$(ps -o stat= -p "$1") && [[ $state != Z* ]]
}

# stop PID: one of our children, and returns when it is gone.
stop() {
  kill "$1" 2>/dev/null || return 0
  poll 2 eval "! running $1" || kill -9 "$1" 2>/dev/null
  wait "$1" 2>/dev/null || true
}

stop_session() {
  set +e
  trap '' INT TERM HUP
  local i pid
  for ((i = ${#started[@]} - 1; i >= 0; i--)); do stop "${started[i]}"; done
  for pid in $(strays); do kill "$pid" 2>/dev/null; done
  # shellcheck disable=SC2016
  poll 2 eval '[ -z "$(strays)" ]' || for pid in $(strays); do kill -9 "$pid" 2>/dev/null; done
  rm -rf "$root"
}
trap stop_session EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

watcher_property() {
  busctl --user get-property org.kde.StatusNotifierWatcher /StatusNotifierWatcher org.kde.StatusNotifierWatcher "$1"
}

start_session() {
  mkdir -p "$root"/{log,config,data,state,cache}
  mkdir -m 700 "$root/run"
  unset WAYLAND_DISPLAY XAUTHORITY SESSION_MANAGER PULSE_SERVER PIPEWIRE_REMOTE XDG_DATA_DIRS XDG_CONFIG_DIRS
  unset QT_QPA_PLATFORM QT_SCALE_FACTOR GDK_SCALE GTK_THEME
  export HOME=$root XDG_RUNTIME_DIR=$root/run XDG_CONFIG_HOME=$root/config XDG_DATA_HOME=$root/data \
    XDG_STATE_HOME=$root/state XDG_CACHE_HOME=$root/cache XDG_CURRENT_DESKTOP=XFCE NO_AT_BRIDGE=1 LANG=C.UTF-8 \
    DBUS_SESSION_BUS_ADDRESS=unix:path=$root/run/bus
  start bus dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS"
  require 10 "the session bus" busctl --user list
  start_sound
  start_desktop
  start_notifications
}

start_sound() {
  start pipewire pipewire
  require 10 "PipeWire" test -S "$XDG_RUNTIME_DIR/pipewire-0"
  # WirePlumber ends where there is no login service, which it asks about Bluetooth only.
  mkdir -p "$XDG_CONFIG_HOME/wireplumber/bluetooth.lua.d"
  echo 'bluez_monitor.enabled = false' >"$XDG_CONFIG_HOME/wireplumber/bluetooth.lua.d/51-no-bluetooth.lua"
  start wireplumber wireplumber
  # pipewire-pulse gives up where a player makes this directory at the same moment.
  mkdir -m 700 "$XDG_RUNTIME_DIR/pulse"
  start pipewire-pulse pipewire-pulse
  sox -n -r 48000 -b 16 -c 2 "$root/silence.wav" trim 0 0.01
  # A sink that is listed may still hang; one that has played does not.
  require 20 "a sink that plays" timeout 2 pw-play "$root/silence.wav"
}

start_desktop() {
  start_screen 800x300
  write_panel_settings
  command -v xsetroot >/dev/null && xsetroot -solid '#4f6272'
  start_panel
}

# start_screen SIZE: an X server with one screen of that size, and a window manager.
start_screen() {
  rm -f "$root/display"
  # -noreset: or the server starts over when the first client that only looks around leaves.
  setpriv --pdeathsig KILL Xvfb -displayfd 1 -screen 0 "$1x24" -nolisten tcp -noreset \
    >"$root/display" 2>"$root/log/xvfb.log" </dev/null &
  started+=($!)
  require 10 "the X server" test -s "$root/display"
  DISPLAY=:$(cat "$root/display")
  export DISPLAY
  # It names itself on the root window too early: a window that is mapped while it starts may escape it for ever.
  start openbox openbox --sm-disable --startup "echo ready"
  require 10 "the window manager" grep -qx ready "$root/log/openbox.log"
}

write_panel_settings() {
  local directory=$XDG_CONFIG_HOME/xfce4/xfconf/xfce-perchannel-xml
  mkdir -p "$directory"
  sed 's/@DARK_MODE@/true/' "$panel_settings" >"$directory/xfce4-panel.xml"
}

start_panel() {
  start panel xfce4-panel --disable-wm-check
  panel=$!
  require 10 "the panel" eval 'watcher_property IsStatusNotifierHostRegistered | grep -q true'
}

# panel_tone dark|light: a new panel in that tone, as a running one keeps the icons in the colours of its old one.
panel_tone() {
  local dark=false
  [ "$1" = light ] || dark=true
  xfconf-query -c xfce4-panel -p /panels/dark-mode -s "$dark"
  stop "$panel"
  start_panel
}

notifications_are_served() {
  gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
    --method org.freedesktop.DBus.NameHasOwner org.freedesktop.Notifications | grep -q true
}

# A notification service that plays a sound with each notification, and an application that sends one.
start_notifications() {
  cat >"$root/ring.sh" <<END
#!/bin/sh
exec paplay "$root/ring.wav"
END
  chmod +x "$root/ring.sh"
  cat >"$root/dunstrc" <<END
[global]
    origin = bottom-left
    timeout = 2
[ring]
    summary = "*"
    script = $root/ring.sh
END
  mkdir -p "$XDG_DATA_HOME/applications"
  cat >"$XDG_DATA_HOME/applications/parcel-watch.desktop" <<'END'
[Desktop Entry]
Type=Application
Name=Parcel Watch
Exec=parcel-watch
END
  start dunst dunst -conf "$root/dunstrc"
  require 10 "the notification service" notifications_are_served
}

make_sounds() {
  local i
  for i in 1 2 3 4 5; do
    sox -n -r 48000 -b 16 -c 2 "$root/tone$i.wav" synth 0.4 sine $((330 + 110 * i)) fade 0.02 0.4 0.1 vol 0.3
  done
  sox -n -r 48000 -b 16 -c 2 "$root/ring.wav" synth 0.3 sine 1320 fade 0.01 0.3 0.2 vol 0.3
  # A sound theme of one sound, for the program that plays event sounds by their names.
  local theme=$XDG_DATA_HOME/sounds/freedesktop
  mkdir -p "$theme/stereo"
  cp "$root/ring.wav" "$theme/stereo/bell.wav"
  printf '[Sound Theme]\nName=Default\nDirectories=stereo\n\n[stereo]\nOutputProfile=stereo\n' >"$theme/index.theme"
}

# A private session for a shell script that sources this file:
#
#   begin_session --sound pipewire --screen 800x300 --window-manager openbox --panel xfce4
#   start player pw-play "$root/tone.wav"
#   require 10 "the end of the sound" silence
#   session tone light
#
# begin_session puts the session's variables in the place of all of the script's, and its facts (root, home, log, user,
# panel_pid and so on) into shell variables of these names. Everything started here ends with the shell, however that
# ends.
# shellcheck shell=bash

session_program=$(realpath "$(dirname "${BASH_SOURCE[0]}")/private_session")
started=()
# shellcheck disable=SC2034  # of those who source this
root='' home='' log='' user='' panel_pid=''

give_up() {
  echo "$(basename "$0"): $1" >&2
  exit 1
}

begin_session() {
  local name
  coproc session_process { exec "$session_program" "$@"; }
  session_pid=$!
  # Programs that are started here do not inherit these two. Their array goes when the program ends.
  session_answers=${session_process[0]} session_commands=${session_process[1]}
  for name in $(compgen -e); do unset "$name" || true; done
  user=''
  read_answer
}

# session COMMAND...: see private_session.
session() {
  echo "$*" >&"$session_commands"
  read_answer
}

read_answer() {
  local line
  while IFS= read -r -u "$session_answers" line; do
    case $line in
      ready) return ;;
      failed:*) give_up "${line#failed: }" ;;
      [[:upper:]]*) export "${line?}" ;;
      *) printf -v "${line%%=*}" %s "${line#*=}" ;;
    esac
  done
  give_up "the private session has ended"
}

# Returns when everything that was started in the session is gone.
end_session() {
  local i
  [ -n "${session_pid:-}" ] || return 0
  for ((i = ${#started[@]} - 1; i >= 0; i--)); do stop "${started[i]}"; done
  started=()
  eval "exec $session_commands>&-"
  wait "$session_pid" || true
  session_pid=''
}
trap 'set +e; trap "" INT TERM HUP; end_session' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# as_user COMMAND...: in the shell's place, as the user who runs the session; it dies with this shell.
as_user() {
  if [ -n "$user" ]; then
    exec setpriv --reuid "${user%:*}" --regid "${user#*:}" --clear-groups --pdeathsig KILL "$@"
  else
    exec setpriv --pdeathsig KILL "$@"
  fi
}

# in_session COMMAND...: runs a program to its end, as the user who runs the session.
in_session() { (as_user "$@"); }

# start NAME COMMAND...: in the background, with a log; its id is in $!.
start() {
  local name=$1
  shift
  as_user "$@" >"$log/$name.log" 2>&1 </dev/null &
  started+=($!)
}

# poll SECONDS CONDITION...: false if it still does not hold after that time.
poll() {
  local end=$((SECONDS + $1))
  shift
  until "$@" >/dev/null 2>&1; do
    [ "$SECONDS" -lt "$end" ] || return 1
    sleep 0.05
  done
}

# require SECONDS WHAT CONDITION...: the same, and gives up.
require() {
  local seconds=$1 what=$2
  shift 2
  poll "$seconds" "$@" && return
  tail -n 5 "$log"/* >&2
  give_up "this did not come up: $what"
}

# A child that has ended stays known until it is waited for, so its state counts and not its id.
running() {
  local state
  state=$(ps -o stat= -p "$1") && [[ $state != Z* ]]
}

# stop PID: one of our children; returns when it is gone.
stop() {
  kill "$1" 2>/dev/null || return 0
  poll 2 eval "! running $1" || kill -9 "$1" 2>/dev/null
  wait "$1" 2>/dev/null || true
}

watcher_property() {
  in_session busctl --user get-property org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
    org.kde.StatusNotifierWatcher "$1"
}

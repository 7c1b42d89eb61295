# A private session for a shell script that sources this file:
#
#   begin_session --sound pipewire --screen 800x300 --window-manager openbox --panel xfce4
#   start player pw-play "$root/tone.wav"
#   require 10 "the end of the sound" silence
#   session tone light
#
# begin_session replaces all environment variables of the script by those of the session, and sets a shell variable for
# each fact of the session: root, home, log, user, panel_pid and so on. Everything that is started here ends with the
# shell, however that ends.
# shellcheck shell=bash

session_program=$(realpath "$(dirname "${BASH_SOURCE[0]}")/private_session")
started=()
# shellcheck disable=SC2034  # scripts that source this file use them
root='' home='' log='' user='' panel_pid=''

give_up() {
  echo "$(basename "$0"): $1" >&2
  exit 1
}

begin_session() {
  local name
  coproc session_process { exec "$session_program" "$@"; }
  session_pid=$!
  # Copies of the coprocess's descriptors, because bash unsets their array when the coprocess ends. Programs that are
  # started here do not inherit them.
  session_answers=${session_process[0]} session_commands=${session_process[1]}
  for name in $(compgen -e); do unset "$name" || true; done
  user=''
  read_answer
}

# session COMMAND...: sends a command of private_session, and gives up if it fails.
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

# Ends the session. Returns when everything that was started in it is gone.
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

# as_user COMMAND...: replaces the subshell that calls it by a program. The program runs as the user of the session, and
# is killed when the script ends.
as_user() {
  if [ -n "$user" ]; then
    exec setpriv --reuid "${user%:*}" --regid "${user#*:}" --clear-groups --pdeathsig KILL "$@"
  else
    exec setpriv --pdeathsig KILL "$@"
  fi
}

# in_session COMMAND...: runs a program to its end, as the user of the session.
in_session() { (as_user "$@"); }

# start NAME COMMAND...: starts a program in the background, with a log. Its process id is in $!.
start() {
  local name=$1
  shift
  as_user "$@" >"$log/$name.log" 2>&1 </dev/null &
  started+=($!)
}

# poll SECONDS CONDITION...: waits until the condition holds; false if it still does not after that time.
poll() {
  local end=$((SECONDS + $1))
  shift
  until "$@" >/dev/null 2>&1; do
    [ "$SECONDS" -lt "$end" ] || return 1
    sleep 0.05
  done
}

# require SECONDS WHAT CONDITION...: the same, but gives up if the condition does not hold in time.
require() {
  local seconds=$1 what=$2
  shift 2
  poll "$seconds" "$@" && return
  tail -n 5 "$log"/* >&2
  give_up "this did not come up: $what"
}

# running PID: whether a child runs. A child that has ended keeps its id until it is waited for, so its state decides.
running() {
  local state
  state=$(ps -o stat= -p "$1") && [[ $state != Z* ]]
}

# stop PID: ends one of our children. Returns when it is gone.
stop() {
  kill "$1" 2>/dev/null || return 0
  poll 2 eval "! running $1" || kill -9 "$1" 2>/dev/null
  wait "$1" 2>/dev/null || true
}

watcher_property() {
  in_session busctl --user get-property org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
    org.kde.StatusNotifierWatcher "$1"
}

# The processes that ./run starts, and what stays of them: nothing but their logs.
# shellcheck shell=bash

readonly SERVICE_USER=Debian-snmp
readonly START_POLLS=100 POLL_SECONDS=0.1
readonly SIGNALLED=128  # the status of a process that a signal has ended, without the signal's number
readonly WITH_US=(setpriv --pdeathsig TERM)
# We may be gone before the process can ask for the signal.
# shellcheck disable=SC2016
readonly UNLESS_ORPHANED=(sh -c '[ "$PPID" = "$0" ] && exec "$@"' "$$")
# What to put before a command that ends with this process.
readonly AS_CHILD=("${WITH_US[@]}" "${UNLESS_ORPHANED[@]}")

# Of one that is gone, there is nothing to wait for: bash waits for any other process instead where a signal came while
# it took note of the end.
stop_process() {
  [[ -n $1 ]] && kill "$1" 2>/dev/null || return 0
  wait "$1" 2>/dev/null || true
}

# started NAME: takes note of the process that was just put into the background.
started() {
  daemons+=("$!")
  daemon_names[$!]=$1
}

# Of one that has ended, as it was to.
forget_last_started() {
  unset 'daemons[-1]'
}

# A signal may come when a process has been started and nothing been noted of it. Also waits for what ends because
# another process has.
stop_unnoted() {
  local unnoted
  mapfile -t unnoted <<<"$(jobs -pr)"
  [[ -z ${unnoted[0]} ]] || kill "${unnoted[@]}" 2>/dev/null || true
  wait || true
}

clean_up() {
  local i
  # Whoever is impatient would break it off.
  trap '' INT TERM HUP
  stop_process "$fetch_pid"
  stop_process "$viewer_pid"
  for ((i = ${#daemons[@]} - 1; i >= 0; i--)); do
    stop_process "${daemons[i]}"
  done
  stop_unnoted
  [[ -z $work ]] || rm -rf "$work" "$place/env" "$place/tools"
}

# Of runs that were killed. Those that live hold a lock.
remove_leftovers() {
  local left
  for left in "${TMPDIR:-/tmp}"/stp-run-????????; do
    if [[ ! -L $left && -f $left/lock ]] && is_ours "$left" && flock --nonblock "$left/lock" true; then
      rm -rf "$left"
    fi
  done
}

# Root hands its folder to the agent's user.
is_ours() {
  [[ -O $1 ]] || { ((EUID == 0)) && [[ $(stat -c %U "$1") == "$SERVICE_USER" ]]; }
}

make_folders() {
  place=$BUILD/$port
  mkdir -p "$place"
  # Another one that has yet to come to its snmpd has not taken the port.
  exec {place_lock}>"$place/lock"
  flock --nonblock "$place_lock" || die "another ./run is about to take UDP port $port: choose another with --port"
  remove_leftovers
  work=$(mktemp -d -t stp-run-XXXXXXXX)
  exec {work_lock}>"$work/lock"
  flock "$work_lock"
  local name
  # Without these folders, each SNMP program says that it creates them.
  mkdir -p "$work/persistent/cert_indexes"
  for name in "${switches[@]}"; do
    mkdir -p "$work/agent${name:+-$name}/persistent/cert_indexes"
  done
  rm -f "$place"/*.log
  root_oid=.1.3.6.1.4.1.$(<"$BUILD/enterprise").9.82
}

service_user_can() {
  setpriv --reuid="$SERVICE_USER" --regid="$SERVICE_USER" --init-groups test "$@" 2>/dev/null
}

# All processes die with this one, and root hands them to the agent's own user where that user can reach everything
# that they need.
choose_service_user() {
  as_service=("${AS_CHILD[@]}")
  ((EUID == 0)) || return 0
  chown -R "$SERVICE_USER:" "$work"
  local missing=
  service_user_can -w "$work" || missing=$work
  [[ -n $live ]] || service_user_can -r "$scenario" || missing=$scenario
  { service_user_can -x "$BUILD/bin/stp-switchd" && service_user_can -r "$BUILD/lib/libstpsnmp.so"; } || missing=$BUILD
  if [[ -z $missing ]]; then
    as_service=("${WITH_US[@]}" --reuid="$SERVICE_USER" --regid="$SERVICE_USER" --init-groups "${UNLESS_ORPHANED[@]}")
  else
    echo "Staying root: $SERVICE_USER cannot reach $missing"
    chown -R root: "$work"
  fi
}

# last_line FILE: why a process gave up, as far as it said.
last_line() {
  grep -s . "$1" | tail -n 1 || true
}

# wait_until PID NAME COMMAND...: until the command succeeds. Fails when the process ends first. `polls`: for how long.
wait_until() {
  local pid=$1 name=$2 i
  shift 2
  # The shell would tell of a signal in its own words, at the latest when it has waited for the process.
  {
    for ((i = 0; i < ${polls:-$START_POLLS}; i++)); do
      ! "$@" >/dev/null || return 0
      if ! kill -0 "$pid"; then
        wait "$pid" || true
        return 1
      fi
      sleep "$POLL_SECONDS"
    done
  } 2>/dev/null
  die "$name started, but does not answer: see $place"
}

# how_it_ended NAME STATUS: and what it said of that, if it could, and where its log is.
how_it_ended() {
  local log=$place/$1.log how="ended with status $2" signal said
  if (($2 > SIGNALLED)) && signal=$(kill -l "$2" 2>/dev/null); then
    how="ended by signal $signal"
  else
    said=$(last_line "$log")
    how+=${said:+: $said}
  fi
  echo "$how (log: $log)"
}

# die_at_start PID NAME: of a process that ended before it was ready.
die_at_start() {
  local status=0
  wait "$1" 2>/dev/null || status=$?
  die "$2 did not start: it $(how_it_ended "$2" "$status")"
}

# Waits until one of them ends, which none should.
report_who_ended() {
  local ended status=0
  # The shell would tell of a signal in its own words.
  { wait -n -p ended "${daemons[@]}" || status=$?; } 2>/dev/null
  die "${daemon_names[$ended]} $(how_it_ended "${daemon_names[$ended]}" "$status")"
}

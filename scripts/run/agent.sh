# The switch, the agent that serves it, and who receives the agent's traps.
# shellcheck shell=bash

readonly COMMUNITY=public
readonly TRAP_FOLDER=/mnt/pss TRAP_FILE=stp_trap_value ALL_TRAPS=7
readonly TRAP_MARK='trap at' TRAP_PORT_TRIES=20

start_switch() {
  "${as_service[@]}" "$BUILD/bin/stp-switchd" --scenario "$scenario" --socket "$work/switch.sock" \
    --control "$work/control.sock" 2>"$place/stp-switchd.log" &
  switch_pid=$!
  wait_until "$switch_pid" stp-switchd "$BUILD/bin/stp-switchctl" --control "$work/control.sock" ping ||
    die_at_start "$switch_pid" stp-switchd
}

# daemon_is_up PID NAME: its own log tells: whoever else has its port would answer a request just as well.
daemon_is_up() {
  wait_until "$1" "$2" grep -q '^NET-SNMP version' "$place/$2.log"
}

port_was_refused() {
  grep -qE '^(Error opening specified endpoint|couldn.t open)' "$place/$1.log"
}

# The configuration's words cannot hold spaces, so the library stands under a path that has none.
write_agent_configuration() {
  ln -s "$BUILD/lib" "$work/lib"
  cat >"$work/snmpd.conf" <<EOF
view shown included $root_oid
view shown included .1.3.6.1.2.1.1
rocommunity $COMMUNITY 127.0.0.1 -V shown
dontLogTCPWrappersConnects yes
dlmod stp_extensions_mib $work/lib/libstpsnmp.so
${trap_port:+trap2sink 127.0.0.1:$trap_port $COMMUNITY}
EOF
}

start_agent() {
  local with_switched_traps=()
  write_agent_configuration
  # shellcheck disable=SC2016  # the inner shell's parameters
  [[ -z $with_traps ]] || with_switched_traps=(unshare --mount sh -ec '
    mount -t tmpfs tmpfs "$(dirname "$1")"; mkdir "$1"; echo "$3" >"$1/$2"; shift 3; exec "$@"
  ' sh "$TRAP_FOLDER" "$TRAP_FILE" "$ALL_TRAPS")
  MIBS='' SNMPCONFPATH=$work SNMP_PERSISTENT_DIR=$work/persistent STPPLATFORM_SOCKET=$work/switch.sock \
    "${with_switched_traps[@]}" "${as_service[@]}" snmpd -f -Le -C -c "$work/snmpd.conf" -I -smux "udp:$agent" \
    2>"$place/snmpd.log" &
  agent_pid=$!
  if ! daemon_is_up "$agent_pid" snmpd; then
    ! port_was_refused snmpd || die "UDP port $port of 127.0.0.1 is taken: choose another with --port"
    die_at_start "$agent_pid" snmpd
  fi
  ! grep '^dlopen' "$place/snmpd.log" >"$work/refused" ||
    die "snmpd did not load the module: $(last_line "$work/refused")"
}

# On the first free port behind the agent's, or before it where none is left behind.
start_trap_receiver() {
  local -a names=()
  local i
  fetch_smi_base
  [[ -z $has_smi_base ]] || names=(-m "$MIB:SNMPv2-MIB" -M "$SMI_BASE:$BUILD/mibs")
  echo "authCommunity log $COMMUNITY" >"$work/snmptrapd.conf"
  for ((i = 1; i <= TRAP_PORT_TRIES; i++)); do
    trap_port=$((port + i <= LAST_PORT ? port + i : port - i))
    MIBS='' SNMPCONFPATH=$work SNMP_PERSISTENT_DIR=$work/persistent \
      "${as_service[@]}" snmptrapd -f -Le -C -c "$work/snmptrapd.conf" -Os "${names[@]}" \
      -F "$TRAP_MARK %.2h:%.2j:%.2k  %v\n" "udp:127.0.0.1:$trap_port" 2>"$place/snmptrapd.log" &
    receiver_pid=$!
    ! daemon_is_up "$receiver_pid" snmptrapd || return 0
    port_was_refused snmptrapd || break
  done
  die_at_start "$receiver_pid" snmptrapd
}

# Each by the time when it came, its name and what it says.
show_traps() {
  tail -n +1 -F "$place/snmptrapd.log" 2>/dev/null | sed --unbuffered -n -E \
    "/^$TRAP_MARK/{s/  .*(snmpTrapOID|\.1\.3\.6\.1\.6\.3\.1\.1\.4\.1)\.0 = OID: /  /; s/\t/, /g; p}" &
  viewer_pid=$!
}

# The switch, the agent that serves it, and who receives the agent's traps.
# shellcheck shell=bash

readonly COMMUNITY=public
readonly BRIDGE_MIB=.1.3.6.1.2.1.17  # with what RSTP-MIB adds to it
readonly TRAP_FOLDER=/mnt/pss TRAP_FILE=stp_trap_value ALL_TRAPS=1f
readonly TRAP_MARK='trap at' TRAP_PORT_TRIES=20

# start_switch NAME: of a bridge of the ring, or none.
start_switch() {
  local name=$1 process=stp-switchd${1:+-$1} enter=() source=(--scenario "$scenario")
  if [[ -n $name ]]; then
    mapfile -t source < <(bridge_lab source "$name")
    enter=("${AS_CHILD[@]}" "$BRIDGE_LAB" inside "$ring" "$name")
  fi
  "${enter[@]}" "${as_service[@]}" "$BUILD/bin/stp-switchd" "${source[@]}" --socket "$work/switch${name:+-$name}.sock" \
    --control "$(control_socket "$name")" 2>"$place/$process.log" &
  started "$process"
  wait_until "$!" "$process" "$BUILD/bin/stp-switchctl" --control "$(control_socket "$name")" ping ||
    die_at_start "$!" "$process"
}

control_socket() {
  echo "$work/control${1:+-$1}.sock"
}

# daemon_is_up PID NAME: its own log tells: whoever else has its port would answer a request just as well.
daemon_is_up() {
  wait_until "$1" "$2" grep -q '^NET-SNMP version' "$place/$2.log"
}

port_was_refused() {
  grep -qE '^(Error opening specified endpoint|couldn.t open)' "$place/$1.log"
}

# write_agent_configuration FOLDER SOURCE: the address that traps come from.
# The configuration's words cannot hold spaces, so the library stands under a path that has none.
write_agent_configuration() {
  ln -s "$BUILD/lib" "$1/lib"
  cat >"$1/snmpd.conf" <<EOF
view shown included $root_oid
view shown included $BRIDGE_MIB
view shown included .1.3.6.1.2.1.1
rocommunity $COMMUNITY 127.0.0.1 -V shown
dontLogTCPWrappersConnects yes
dlmod stp_extensions_mib $1/lib/libstpsnmp.so
dlmod stp_bridge_mib $1/lib/libstpbridge.so
${trap_port:+trap2sink -s $2 127.0.0.1:$trap_port $COMMUNITY}
EOF
}

# trap_source NAME: an address of loopback for each, by which its traps are known.
trap_source() {
  echo "127.0.0.$((1 + $(agent_port "$1") - port))"
}

start_agent() {
  local name=$1 process=snmpd${1:+-$1} folder=$work/agent${1:+-$1} with_switched_traps=()
  write_agent_configuration "$folder" "$(trap_source "$name")"
  # shellcheck disable=SC2016  # the inner shell's parameters
  [[ -z $with_traps ]] || with_switched_traps=(unshare --mount sh -ec '
    mount -t tmpfs tmpfs "$(dirname "$1")"; mkdir "$1"; echo "$3" >"$1/$2"; shift 3; exec "$@"
  ' sh "$TRAP_FOLDER" "$TRAP_FILE" "$ALL_TRAPS")
  MIBS='' SNMPCONFPATH=$folder SNMP_PERSISTENT_DIR=$folder/persistent \
    STPPLATFORM_SOCKET=$work/switch${name:+-$name}.sock \
    "${with_switched_traps[@]}" "${as_service[@]}" snmpd -f -Le -C -c "$folder/snmpd.conf" -I -smux \
    "udp:$(agent_of "$name")" 2>"$place/$process.log" &
  started "$process"
  if ! daemon_is_up "$!" "$process"; then
    ! port_was_refused "$process" ||
      die "UDP port $(agent_port "$name") of 127.0.0.1 is taken: choose another with --port"
    die_at_start "$!" "$process"
  fi
  ! grep '^dlopen' "$place/$process.log" >"$folder/refused" ||
    die "snmpd did not load the module: $(last_line "$folder/refused")"
}

# On the first free port behind the agents', or before them where none is left behind.
start_trap_receiver() {
  local -a names=()
  local i last=$((port + ${#switches[@]} - 1))
  fetch_smi_base
  [[ -z $has_smi_base ]] || names=(-m "$MIB:SNMPv2-MIB" -M "$SMI_BASE:$BUILD/mibs")
  echo "authCommunity log $COMMUNITY" >"$work/snmptrapd.conf"
  for ((i = 1; i <= TRAP_PORT_TRIES; i++)); do
    trap_port=$((last + i <= LAST_PORT ? last + i : port - i))
    MIBS='' SNMPCONFPATH=$work SNMP_PERSISTENT_DIR=$work/persistent \
      "${as_service[@]}" snmptrapd -f -Le -C -c "$work/snmptrapd.conf" -Os "${names[@]}" \
      -F "$TRAP_MARK %.2h:%.2j:%.2k${live:+ %b}  %v\n" "udp:127.0.0.1:$trap_port" 2>"$place/snmptrapd.log" &
    started snmptrapd
    ! daemon_is_up "$!" snmptrapd || return 0
    port_was_refused snmptrapd || break
    forget_last_started
  done
  die_at_start "$!" snmptrapd
}

# Each by the time when it came, the bridge where there are several, its name and what it says.
show_traps() {
  local name whose=
  for name in "${switches[@]}"; do
    [[ -z $name ]] || whose+="s/ UDP: \[$(trap_source "$name")\][^ ]*  / on $name  /; "
  done
  tail -n +1 -F "$place/snmptrapd.log" 2>/dev/null | sed --unbuffered -n -E \
    "/^$TRAP_MARK/{${whose}s/  .*(snmpTrapOID|\.1\.3\.6\.1\.6\.3\.1\.1\.4\.1)\.0 = OID: /  /;
     s/  [^ ]*\.17\.0\.1(\t|$)/  newRoot\1/; s/  [^ ]*\.17\.0\.2(\t|$)/  topologyChange\1/; s/\t/, /g; p}" &
  viewer_pid=$!
}

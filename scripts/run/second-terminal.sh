# What is told when everything runs, and the file that gives a second terminal short commands.
# shellcheck shell=bash

readonly MIB=VANTREL-STP-EXTENSIONS-MIB SMI_BASE=$PROJECT_ROOT/build/smi FETCH_SECONDS=60
readonly TIMED_OUT=124  # the status of timeout itself

why_no_names=

# What the MIB file imports is not ours to ship: without it, there are no names for the tools.
fetch_smi_base() {
  [[ -z $has_smi_base ]] || return 0
  local log=$work/smi.log status=0
  # In the background: the shell attends to Ctrl-C while it waits, not while another command runs.
  timeout "$FETCH_SECONDS" "$PROJECT_ROOT/tools/fetch-mibs/stp-fetch-mibs" "$SMI_BASE" 2>"$log" &
  fetch_pid=$!
  wait "$fetch_pid" || status=$?
  fetch_pid=
  if ((status == 0)); then
    has_smi_base=yes
  elif ((status == TIMED_OUT)); then
    why_no_names="no answer within $FETCH_SECONDS s"
  else
    why_no_names=$(last_line "$log")
  fi
}

# What the tools need to know, for this shell or another one: also that of another user, who can read $place.
tool_settings() {
  local mibs="$MIB:SNMPv2-MIB" folders="$SMI_BASE:$BUILD/mibs"
  [[ -n $has_smi_base ]] || mibs='' folders=''
  cat <<EOF
export PATH=$(printf %q "$BUILD/bin:$PROJECT_ROOT/tools/show-walk"):"\$PATH"
export SNMPCONFPATH=$(printf %q "$place/tools") SNMP_PERSISTENT_DIR=$(printf %q "$place/tools")
export MIBS=$mibs MIBDIRS=$(printf %q "$folders")
EOF
  [[ -n $live ]] || cat <<EOF
export STPSWITCHD_CONTROL=$(printf %q "$(control_socket '')")
export AGENT=$(agent_of '')
EOF
}

use_tools() {
  mkdir -p "$place/tools/cert_indexes"
  printf 'defVersion 2c\ndefCommunity %s\n' "$COMMUNITY" >"$place/tools/snmp.conf"
  eval "$(tool_settings)"
}

print_instructions() {
  fetch_smi_base
  local as_whom= example_agent=\$AGENT
  # shellcheck disable=SC2016  # for the other terminal
  [[ -z $live ]] || example_agent='$(agent_of c)'
  ((EUID != 0)) || as_whom=', as root'
  {
    tool_settings
    [[ -z $live ]] || ring_commands
  } >"$place/env"
  cat <<EOF

For another terminal, which knows sockets, agent and names then:
  . $(printf %q "$place/env")
EOF
  if [[ -n $live ]]; then
    print_ring_instructions "$as_whom"
  else
    print_switch_instructions "$as_whom"
  fi
  if [[ -n $has_smi_base ]]; then
    cat <<EOF
  snmpwalk $example_agent stpxObjects
  snmptable -Ci -Cb $example_agent stpxRSTPPortTable
  snmptranslate -Td $MIB::stpxRSTPPortRole
EOF
  else
    echo "By name, the tools need what the MIB file imports, which cannot be had: $why_no_names"
  fi
  printf '\nRunning until Ctrl-C.%s\n' "${with_traps:+ Traps as they come:}"
}

print_switch_instructions() {
  cat <<EOF

Look at the switch, and change it$1:
  stp-switchctl show
  stp-switchctl set mst.region campus-north
  stp-switchctl set port.1.root_inconsistent 0-10
  stp-switchctl set switch.mode rapid-pvst
  stp-switchctl fault drop
  stp-switchctl fault none
  stp-switchctl reset
Walk the agent, as shown above, or as managers see it:
  stp-show-walk --root $root_oid \$AGENT
  snmpwalk -On \$AGENT $root_oid
  snmpwalk \$AGENT $BRIDGE_MIB  # BRIDGE-MIB and RSTP-MIB, for stock managers
EOF
}

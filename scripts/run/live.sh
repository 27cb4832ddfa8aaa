# A ring of real bridges, for --live: bridge-lab makes it, keeps it, and removes it when it ends.
# shellcheck shell=bash

readonly BRIDGE_LAB=$PROJECT_ROOT/scripts/bridge-lab
readonly NOTHING_BLOCKS=3  # a status of bridge-lab
readonly RING_POLLS=600

ring=  # the file that tells how to reach it

bridge_lab() {
  "$BRIDGE_LAB" "$1" "$ring" "${@:2}"
}

why_no_ring() {
  last_line "$place/bridge-lab.log" | sed 's/^bridge-lab: //'
}

# start_ring KIND: fails where nothing blocks in it. It is gone then.
start_ring() {
  local status=0
  ring=$place/ring.json
  rm -f "$ring"  # of a ring that was killed, or went with the machine
  "${AS_CHILD[@]}" "$BRIDGE_LAB" hold "$1" "$ring" "$work/ring" 2>"$place/bridge-lab.log" &
  started bridge-lab
  polls=$RING_POLLS wait_until "$!" bridge-lab test -e "$ring" || wait "$!" || status=$?
  ((status != NOTHING_BLOCKS)) || return 1
  [[ -e $ring ]] || die "$(why_no_ring)"
}

# Older kernels drop the protocol's packets in every namespace but the first.
make_ring() {
  "$PROJECT_ROOT/scripts/install-packages" live
  heading "Making a ring of three bridges: $live"
  if [[ $live == linux ]] && ! start_ring linux; then
    echo "Linux bridges do not hear each other in network namespaces here ($(uname -r)): their ring is removed," \
      "and one of Open vSwitch made"
    forget_last_started
    live=openvswitch
  fi
  if [[ $live == openvswitch ]]; then
    "$PROJECT_ROOT/scripts/install-packages" openvswitch
    start_ring openvswitch || die "$(why_no_ring)"
  fi
}

# show_own_words NAME: what the bridge itself says, above the walk.
show_own_words() {
  bridge_lab status "$1"
  echo
}

# What the second terminal can do with the ring.
ring_commands() {
  local lab name
  lab=$(printf %q "$BRIDGE_LAB")
  cat <<EOF
pull() { $lab pull $(printf %q "$ring") "\$@"; }
restore() { $lab restore $(printf %q "$ring") "\$@"; }
better_root() { $lab better-root $(printf %q "$ring"); }
no_better_root() { $lab no-better-root $(printf %q "$ring"); }
status() { $lab status $(printf %q "$ring") "\$@"; }
inside() { $lab inside $(printf %q "$ring") "\$@"; }
walk() { stp-show-walk --root $root_oid --partial "\$(agent_of "\$1")"; }
show() { stp-switchctl --control $(printf %q "$work")/control-"\$1.sock" show; }
agent_of() {
  case \$1 in
EOF
  for name in "${switches[@]}"; do
    echo "    $name) echo $(agent_of "$name") ;;"
  done
  printf '    *) echo "there is no bridge %s: %s" >&2 ;;\n  esac\n}\n' "'\$1'" "${switches[*]}"
}

print_ring_instructions() {
  local as_whom=$1
  cat <<EOF

Ask the bridges themselves, and change the ring$as_whom:
  status                 # all of them; or: status c
  pull a c               # c loses its root port: to-b takes over
  restore a c
EOF
  if [[ $live == linux ]]; then
    cat <<EOF
  better_root            # behind a's port to the guest, which has root guard: inconsistent while it speaks
  no_better_root
EOF
  fi
  cat <<EOF
  show c                 # what stp-switchd has read; or: inside c ip -d link
Walk the agents of a, b and c, as shown above, or as managers see them:
  walk c                 # watch stpxRSTPPortRoleTable and stpxRootInconsistencyTable; --traps shows traps
  snmpwalk -On \$(agent_of c) $root_oid
  snmpwalk \$(agent_of c) $BRIDGE_MIB  # BRIDGE-MIB and RSTP-MIB, for stock managers
EOF
}

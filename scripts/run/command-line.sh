# What ./run was asked for. All of this is checked before anything is installed or built; what a scenario says, by
# stp-switchd, as soon as that one is built.
# shellcheck shell=bash

readonly FIRST_UNPRIVILEGED_PORT=1024 LAST_PORT=65535

parse_command_line() {
  local with_scenario=
  while (($# > 0)); do
    case $1 in
      --once) once=yes ;;
      --traps) with_traps=yes ;;
      --live)
        live=linux
        if (($# > 1)) && [[ $2 != -* ]]; then
          live=$2
          shift
        fi
        ;;
      --scenario | --port)
        (($# > 1)) || usage_error "$1 needs a value"
        if [[ $1 == --port ]]; then port=$2; else scenario=$2 with_scenario=yes; fi
        shift
        ;;
      -h | --help) help_if_asked "$1" ;;
      *) usage_error "unknown argument '$1'" ;;
    esac
    shift
  done
  [[ -z $once || -z $with_traps ]] || usage_error "--traps shows what comes after the walk, where --once stops"
  if [[ -n $live ]]; then
    [[ -z $with_scenario ]] || usage_error "--live shows real bridges, --scenario a switch that is none"
    [[ $live =~ ^(linux|openvswitch)$ ]] || usage_error "--live: '$live' is not linux or openvswitch"
    switches=(a b c)
  else
    check_scenario_file
  fi
  check_ports
  [[ -z $with_traps ]] || check_private_mount
}

# agent_port NAME: where the agent of this switch listens.
agent_port() {
  local i
  for i in "${!switches[@]}"; do
    [[ ${switches[i]} != "$1" ]] || echo $((port + i))
  done
}

agent_of() {
  echo "127.0.0.1:$(agent_port "$1")"
}

check_ports() {
  local last=$((LAST_PORT + 1 - ${#switches[@]})) i
  [[ $port != *[.:]* ]] ||
    usage_error "--port: '$port' is an address: snmpd listens on 127.0.0.1, expected the number of a UDP port"
  if [[ ! $port =~ ^[1-9][0-9]{0,4}$ ]] || ((port > last)); then
    usage_error "--port: '$port' is not in 1..$last"
  fi
  ((port >= FIRST_UNPRIVILEGED_PORT)) ||
    die "UDP port $port is below $FIRST_UNPRIVILEGED_PORT, where only root may listen, which this snmpd shall not be:" \
      "choose another with --port"
  for ((i = port; i < port + ${#switches[@]}; i++)); do
    ! port_is_taken "$i" || die "UDP port $i of 127.0.0.1 is taken: choose another with --port"
  done
}

# By a socket that is bound to 127.0.0.1, in either order of octets, or to all addresses. Whether an IPv6 socket takes
# IPv4 too cannot be seen here: snmpd finds out.
port_is_taken() {
  local local_port
  printf -v local_port '%04X' "$1"
  grep -qE "^ *[0-9]+: (0100007F|7F000001|0{8}):$local_port " /proc/net/udp 2>/dev/null
}

check_scenario_file() {
  [[ -e $scenario ]] || die "there is no scenario '$scenario'"
  [[ -f $scenario && -r $scenario ]] || die "cannot read the scenario '$scenario'"
  scenario=$(realpath "$scenario")
}

# The module reads which traps are on from a file that stands at one place on every switch.
check_private_mount() {
  ((EUID == 0)) || die "--traps: only root can make the private mount that switches them on"
  unshare --mount true 2>/dev/null ||
    die "--traps: no private mount can be made here (is / a mount point? In a plain chroot it is not)"
}

# What the project's commands share. Sourced by bash scripts that have set -euo pipefail.
# shellcheck shell=bash

PROJECT_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)

# die MESSAGE: one line on stderr that says who gave up and why.
die() {
  printf '%s: %s\n' "$(basename "$0")" "$1" >&2
  exit 1
}

# usage_error MESSAGE: the same for a command line that makes no sense.
usage_error() {
  printf '%s: %s (see --help)\n' "$(basename "$0")" "$1" >&2
  exit 2
}

heading() {
  printf '\n== %s\n' "$1"
}

# help_if_asked ARGUMENT...: shows the command's opening comment, without the comment signs.
help_if_asked() {
  [[ ${1-} == -h || ${1-} == --help ]] || return 0
  sed -n -e '1d' -e '/^#/!q' -e 's/^# \{0,1\}//p' "$0"
  exit 0
}

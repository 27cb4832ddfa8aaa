# What the project's commands share. Sourced by bash scripts that have set -euo pipefail.
# shellcheck shell=bash

PROJECT_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)

# die WORD...: one line on stderr that says who gave up and why.
die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# usage_error MESSAGE: the same for a command line that makes no sense.
usage_error() {
  printf '%s: %s (see --help)\n' "$(basename "$0")" "$1" >&2
  exit 2
}

# The exit status of a test that this machine cannot run.
# shellcheck disable=SC2034
readonly CANNOT_RUN=77

# Bash hands commands to each other by its files.
[[ -d /dev/fd/ ]] || die "/proc is not mounted, or /dev/fd does not lead there: mount -t proc proc /proc"

# configure PRESET: a build folder that was copied or moved here is configured anew.
configure() {
  local cache=$PROJECT_ROOT/build/$1/CMakeCache.txt fresh=
  if [[ -e $cache ]] && ! grep -qxF "CMAKE_CACHEFILE_DIR:INTERNAL=${cache%/*}" "$cache"; then
    fresh=--fresh
  fi
  (cd "$PROJECT_ROOT" && cmake $fresh --preset "$1")
}

# packages_for PURPOSE...: the Debian packages that scripts/packages.txt has for any of these.
packages_for() {
  local package purposes purpose
  while read -r package purposes; do
    for purpose in $purposes; do
      if [[ " $* " == *" $purpose "* ]]; then
        echo "$package"
        break
      fi
    done
  done < <(grep -v '^#' "$PROJECT_ROOT/scripts/packages.txt")
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

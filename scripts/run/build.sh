# Builds what ./run starts.
# shellcheck shell=bash

readonly USUAL_WIDTH=80

# show_progress: of a build's lines, the one that tells how far it is, in place of the one before. Others see nothing.
show_progress() {
  local line width
  [[ -t 1 ]] || { cat >/dev/null; return; }
  width=$(tput cols 2>/dev/null || echo "$USUAL_WIDTH")
  while IFS= read -r line; do
    [[ $line != \[*/*\]* ]] || printf '\r\033[K%.*s' $((width - 1)) "$line"
  done
  printf '\r\033[K'
}

# build TARGET: one build at a time, in this folder.
build() {
  local target=$1
  mkdir -p "$BUILD"
  (
    flock --nonblock 9 || { echo "Waiting for another build in $BUILD"; flock 9; }
    # Behind || a failure ends nothing by itself.
    {
      configure run && cmake --build "$BUILD" --target "$target"
    } 2>&1 | tee "$BUILD/run.log" | show_progress
  ) 9>"$BUILD/run.lock" || die "the build failed: see $BUILD/run.log"
}

check_scenario() {
  local wrong
  wrong=$("$BUILD/bin/stp-switchd" --scenario "$scenario" --check 2>&1) || die "${wrong#stp-switchd: }"
}

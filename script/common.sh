# Shared by the scripts in this folder: where things lie and how progress and failure are told.
# Sourced, not run.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build
logs=$build/logs
mkdir -p "$logs"
source "$root/cmake/distribution"

# Prints the comment block at the head of the calling script and ends it.
usage() {
  sed -n '2,/^[^#]/{s/^# \{0,1\}//p}' "$0"
  exit "${1:-0}"
}

say() { printf '%s\n' "$*"; }

# fail MESSAGE [ADVICE]: one clear line each, then the end.
fail() {
  printf 'error: %s\n' "$1" >&2
  if [ -n "${2:-}" ]; then printf '       %s\n' "$2" >&2; fi
  exit 1
}

# step NAME COMMAND...: runs a command with its output in a log; says how long it took. A failing
# step names itself, shows the end of its log and where the whole log lies.
step() {
  local name=$1 log started
  shift
  log=$logs/$(printf '%s' "$name" | tr -c 'A-Za-z0-9' '-').log
  started=$SECONDS
  printf '%-52s' "$name"
  if "$@" >"$log" 2>&1 </dev/null; then
    printf 'ok %4d s\n' $((SECONDS - started))
  else
    printf 'FAILED\n'
    tail -n 25 "$log" >&2
    fail "$name failed" "The whole log: $log"
  fi
}

# configure_and_build PRESET [TARGET...]: CMake by preset, into build/PRESET.
configure_and_build() {
  local preset=$1
  shift
  if [ ! -f "$build/$preset/build.ninja" ]; then
    step "configure ($preset)" cmake --preset "$preset" -S "$root"
  fi
  step "build ($preset)" cmake --build "$build/$preset" ${1:+--target "$@"}
}

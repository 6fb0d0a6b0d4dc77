# shellcheck shell=bash
# Every script here sources this first: it changes to the root of the tree, sets strict mode and defines functions.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# fail TEXT: prints "SCRIPT: TEXT" and ends the script with status 1.
fail() {
  echo "$(basename "$0"): $1" >&2
  exit 1
}

# step WHAT COMMAND...: runs the command; when it fails, the script ends with "WHAT failed".
step() {
  local what=$1
  shift
  "$@" || fail "$what failed"
}

# quietly WHAT COMMAND...: the same without the command's output; when it fails, shows the last 40 lines.
quietly() {
  local what=$1 log
  shift
  echo "$what ..."
  log="build/$(basename "$0").log"
  { mkdir -p build && : >"$log"; } 2>/dev/null || log=$(mktemp) # the tree may be read-only
  "$@" >"$log" 2>&1 || { tail -n 40 "$log" >&2; fail "$what failed (see $log)"; }
}

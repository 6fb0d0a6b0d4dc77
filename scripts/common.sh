# shellcheck shell=bash
# Sourced first by every script here: from any folder to the root of the tree, strict mode, one line on a failure.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

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

# quietly WHAT COMMAND...: the same, but of its output only the end is seen, and only when it fails.
quietly() {
  local what=$1 log
  shift
  echo "$what ..."
  mkdir -p build
  log="build/$(basename "$0").log"
  "$@" >"$log" 2>&1 || { tail -n 40 "$log" >&2; fail "$what failed (see $log)"; }
}

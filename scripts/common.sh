# shellcheck shell=bash
# Every script here sources this first: it changes to the root of the tree, sets strict mode and defines functions.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# fail TEXT: prints "SCRIPT: TEXT" and ends the script with status 1.
fail() {
  echo "$(basename "$0"): $1" >&2
  exit 1
}

# own_address: prints an address of loopback and a port, for a server that cannot choose a free port itself. One of 16
# million addresses: nobody else listens there, also while several scripts run.
own_address() { echo "127.$((RANDOM % 254 + 1)).$((RANDOM % 256)).$((RANDOM % 254 + 1)):$((20000 + RANDOM % 10000))"; }

# as_root COMMAND...: runs the command as root.
as_root() { if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi; }

# await WHAT COMMAND...: repeats the command until it succeeds, for about five minutes at most, as on a loaded machine.
await() {
  local what=$1
  shift
  for _ in {1..3000}; do
    "$@" >/dev/null 2>&1 && return
    sleep 0.1
  done
  fail "$what has not started"
}

# answers ADDRESS:PORT: something listens there.
answers() { (: <"/dev/tcp/${1/://}"); }

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

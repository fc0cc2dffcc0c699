#!/bin/bash
# Runs a command in a network namespace of its own with three emulated printers in it, so that it may search: 127.0.0.2,
# 127.0.0.3 (named "Dock 3", setting 3 is 300) and 127.0.0.4; or, with --many, a hundred: 127.0.1.1, 127.0.1.2 ...
# The command sees TAVIRA_TEST_NETWORK=1, and the folder of the printers' memory as TAVIRA_TEST_MEMORY.
# Usage: in_namespace.sh [--many] LXEMU_NETWORK WORK_FOLDER COMMAND [ARGUMENT...]
# Exit code: the command's; 77 skipped (no permission to make a network namespace); 1 the printers do not start.
set -euo pipefail

if [[ ${1:-} != --inside ]]; then
  (($# >= 3)) || { sed -n '2,7s/^# //p' "$0" >&2; exit 2; }
  if ! unshare -n true 2>/dev/null; then
    echo "SKIPPED: this user may not make a network namespace (unshare -n); run it as root"
    exit 77
  fi
  exec unshare -n -- bash "${BASH_SOURCE[0]}" --inside "$(readlink /proc/self/ns/net)" "$@"
fi

outside=$2
shift 2
printer_options=(--printer 127.0.0.2 --printer "127.0.0.3:Dock 3" --printer 127.0.0.4)
if [[ $1 == --many ]]; then
  shift
  printer_options=()
  for ((i = 1; i <= 100; i++)); do
    printer_options+=(--printer "127.0.1.$i")
  done
fi
program=$1 work=$2
shift 2
printers=
finish() {
  local status=$?
  if [[ $printers ]]; then
    kill "$printers" 2>/dev/null || true
    wait "$printers" 2>/dev/null || true
  fi
  exit "$status"
}
trap finish EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

fail() { echo "FAILED: $*" >&2; exit 1; }

[[ $(readlink /proc/self/ns/net) != "$outside" ]] || fail "still in the namespace of the caller"
ip link set lo up
ip route add 255.255.255.255/32 dev lo src 127.0.0.1
[[ $(ip -o link show | wc -l) == 1 ]] || fail "the namespace has more than the loopback"

rm -rf "$work"
mkdir -p "$work/memory/127.0.0.3"
: >"$work/printers.txt"
printf '[factory]\nCLR,Z = 300\n' >"$work/memory/127.0.0.3/printer.ini"
# The time is for the case that this script is killed.
"$program" "${printer_options[@]}" --memory "$work/memory" --for 300 >"$work/printers.txt" 2>&1 &
printers=$!
for ((i = 0; ; i++)); do
  ! grep -qx ready "$work/printers.txt" || break
  ((i < 200)) || { cat "$work/printers.txt"; fail "the printers are not ready within 10 s"; }
  sleep 0.05
done
export TAVIRA_TEST_NETWORK=1 TAVIRA_TEST_MEMORY=$work/memory
"$@"

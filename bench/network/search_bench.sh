#!/bin/bash
# Searches among emulated printers in a network namespace that it makes itself; prints the row of bench_search.
#
# Usage: search_bench.sh BIN_FOLDER PRINTERS GOAL_SECONDS
set -euo pipefail
if [[ ${1:-} != --inside ]]; then
  exec unshare -n -- "${BASH_SOURCE[0]}" --inside "$@"
fi
bin=$2 printers=$3 goal=$4
ip link set lo up
ip route add 255.255.255.255/32 dev lo src 127.0.0.1
folder=$(mktemp -d)
emulator=""
finish() {
  [[ ! $emulator ]] || kill "$emulator" 2>/dev/null || true
  rm -rf "$folder"
}
trap finish EXIT
arguments=()
for ((i = 2; i < printers + 2; i++)); do
  arguments+=(--printer "127.0.0.$i:Bench $i")
done
"$bin/lxemu_network" "${arguments[@]}" --memory "$folder" --for 120 >"$folder/log" 2>&1 &
emulator=$!
for ((i = 0; i < 400; i++)); do
  ! grep -qx ready "$folder/log" || break
  sleep 0.05
done
grep -qx ready "$folder/log" || { cat "$folder/log" >&2; exit 1; }
"$bin/bench_search" "$printers" "$goal"

#!/bin/bash
# A host under Wine and three emulated printers in a network namespace of their own: search with a real broadcast,
# choose a printer, load, store, back up; then twenty at once.
# Usage: network_test.sh LXEMU_NETWORK BIN_FOLDER WORK_FOLDER
#   LXEMU_NETWORK  the native program    BIN_FOLDER  tvmgr.exe, TaviraManager.dll, Ferrolink.dll, network_probe.exe,
#     manager_tests.exe, module_loading_tests.exe
#   WORK_FOLDER    is made; keeps a Wine prefix of its own for the next run
# Exit code 0 passed, 77 skipped (no permission to make a network namespace), else failed.
set -euo pipefail

printers=(127.0.0.2 127.0.0.3 127.0.0.4)
chosen=127.0.0.3

fail() { echo "FAILED: $*" >&2; exit 1; }

# --- Outside: make the namespace, run this script again inside it -----------------------------------------------------
if [[ ${1:-} != --inside ]]; then
  (($# == 3)) || { sed -n '2,9s/^# //p' "$0" >&2; exit 2; }
  if ! unshare -n true 2>/dev/null; then
    echo "SKIPPED: this user may not make a network namespace (unshare -n); run it as root"
    exit 77
  fi
  program=$(realpath "$1") bin=$(realpath "$2")
  mkdir -p "$3"
  work=$(realpath "$3")
  script=$(realpath "${BASH_SOURCE[0]}")
  # An open file keeps hold of the namespace that we come from, for the counter-check inside.
  exec 8</proc/self/ns/net
  exec unshare -n -- bash "$script" --inside "$program" "$bin" "$work" "$(readlink /proc/self/ns/net)"
fi

# --- Inside -----------------------------------------------------------------------------------------------------------
shift
program=$1 bin=$2 work=$3 outside=$4
started=()
wine_server=

finish() {
  local status=$? pid
  if [[ $wine_server ]]; then
    "$wine_server" -k 2>/dev/null || true # the server of our own prefix only
    "$wine_server" -w 2>/dev/null || true
  fi
  for pid in "${started[@]}"; do
    kill "$pid" 2>/dev/null || true
  done
  for pid in "${started[@]}"; do
    wait "$pid" 2>/dev/null || true
  done
  exit "$status"
}
trap finish EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

step() { printf '\n# %s\n' "$*"; }

[[ $(readlink /proc/self/ns/net) != "$outside" ]] || fail "still in the namespace of the caller"
ip link set lo up
ip route add 255.255.255.255/32 dev lo src 127.0.0.1
[[ $(ip -o link show | wc -l) == 1 ]] || fail "the namespace has more than the loopback"

find_wine() { PATH="$PATH:/usr/lib/wine" command -v "$@" | head -n 1; }
wine=$(find_wine wine64 wine) || fail "wine64 is not installed"
server=$(find_wine wineserver wineserver64) || fail "wineserver is not installed"
unset DISPLAY LXEMU_LOG
export LC_ALL=C.UTF-8 WINEPREFIX=$work/wine WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml=;winedbg.exe=d;winemenubuilder.exe=d"
export LXEMU_MEMORY=Z:$work/host-memory # what would be written there went to the wrong printer

# wine_run PROGRAM ARGUMENT...: its output without carriage returns.
wine_run() { timeout 120 "$wine" "$bin/$1" "${@:2}" </dev/null | tr -d '\r'; }
tvmgr() { printf '$ tvmgr %s\n' "$*" >&2; wine_run tvmgr.exe "$@"; }

step "Three printers, the chosen one with a setting and a file of its own"
rm -rf "$work/memory" "$work/host-memory" "$work/output"
mkdir -p "$work/memory/$chosen/E" "$work/output"
printf '[factory]\nCLR,Z = 300\n[search]\ntwice = announcement\nother_port = state\n' >"$work/memory/$chosen/printer.ini"
head -c 5000 /dev/urandom >"$work/memory/$chosen/E/PHOTO.PNG"
touch "$work/output/"{printers.txt,sentinel-port}
# The times are for the case that this script is killed.
"$program" --printer 127.0.0.2 --printer "$chosen:Dock 3" --printer 127.0.0.4 --memory "$work/memory" \
  --log "$work/output/printers.log" --for 900 >"$work/output/printers.txt" 2>&1 8<&- &
started+=($!)
for ((i = 0; ; i++)); do
  ! grep -qx ready "$work/output/printers.txt" || break
  ((i < 200)) || { cat "$work/output/printers.txt"; fail "the printers are not ready within 10 s"; }
  sleep 0.05
done
cat "$work/output/printers.txt"

step "A sentinel that only this namespace has"
token=$(head -c 16 /dev/urandom | od -An -tx1 | tr -d ' \n')
python3 - "$token" "$work/output/sentinel-port" 8<&- <<'PYTHON' &
import os, socket, sys
listener = socket.create_server(("127.0.0.1", 0))
listener.settimeout(900)
with open(sys.argv[2] + ".new", "w") as file:
    file.write(str(listener.getsockname()[1]))
os.rename(sys.argv[2] + ".new", sys.argv[2])
while True:
    connection, _ = listener.accept()
    connection.sendall(sys.argv[1].encode())
    connection.close()
PYTHON
started+=($!)
for ((i = 0; i < 200; i++)); do
  [[ ! -s $work/output/sentinel-port ]] || break
  sleep 0.05
done
sentinel=$(<"$work/output/sentinel-port")
[[ $(nsenter --net=/proc/self/fd/8 readlink /proc/self/ns/net) == "$outside" ]] || fail "there is no way to look from outside"
seen=$(nsenter --net=/proc/self/fd/8 bash -c "exec 3<>/dev/tcp/127.0.0.1/$sentinel && cat <&3" 2>/dev/null || true)
[[ $seen != "$token" ]] || fail "the sentinel can be reached from outside"
echo "port $sentinel; it cannot be reached from outside"

step "A Wine server inside the namespace"
mkdir -p "$WINEPREFIX"
"$server" -p300 </dev/null >/dev/null 2>&1 8<&- || fail "a Wine server runs already in $WINEPREFIX"
wine_server=$server
"$wine" cmd /c exit </dev/null >/dev/null 2>&1 8<&- || fail "Wine does not start programs"

step "The host reaches the sentinel, and a broadcast reaches all printers"
wine_run network_probe.exe "$sentinel" "$token" 1 >"$work/output/probe.txt" || fail "network_probe: see above"
cat "$work/output/probe.txt"
diff <(printf '%s\n' "${printers[@]}") "$work/output/probe.txt" || fail "not all printers answered the broadcast"

# search_finds ADDRESS...: a search finds exactly these printers, with their names.
search_finds() {
  tvmgr search network --json | tee "$work/output/search.json"
  python3 - "$work/output/search.json" "$@" <<'PYTHON' || fail "the search found something else"
import json, sys
with open(sys.argv[1], encoding="utf-8") as file:
    found = json.load(file)["printers"]
expected = [(address, "LX-R4100", "Dock 3" if address == "127.0.0.3" else address) for address in sys.argv[2:]]
assert sorted((entry["value"], entry["name"], entry["second_name"]) for entry in found) == expected, found
PYTHON
}

step "A search finds all of them, each once"
search_finds "${printers[@]}"
step "The C++ layer searches, chooses, loads"
TAVIRA_TEST_NETWORK=1 wine_run manager_tests.exe --gtest_brief=1 "--gtest_filter=ManagerSearchTest.*" || fail "manager_tests"
step "A search does not find printers whose answers are wrong"
mkdir -p "$work/memory/"{127.0.0.2,127.0.0.4}
printf '[search]\nwrong_letter = announcement\n' >"$work/memory/127.0.0.2/printer.ini"
printf '[search]\nrejected = names\n' >"$work/memory/127.0.0.4/printer.ini"
search_finds "$chosen"

step "Hosts that unload the module while a printer has fallen silent lose no socket"
printf '[search]\nsilent = state\n' >"$work/memory/127.0.0.4/printer.ini"
rm "$work/memory/127.0.0.2/printer.ini"
TAVIRA_TEST_NETWORK=1 wine_run module_loading_tests.exe --gtest_brief=1 "--gtest_filter=ModuleNetworkTest.*" ||
  fail "module_loading_tests"

step "Load all settings of the one chosen, and of another one"
for address in "$chosen" 127.0.0.4; do
  tvmgr --address "$address" get --all --json >"$work/output/settings-$address.json" ||
    fail "the settings of $address could not be loaded"
done
python3 - "$work/output" "$chosen" <<'PYTHON' || fail "these are not the settings of the printers"
import json, sys
def setting(address, key):
    with open(f"{sys.argv[1]}/settings-{address}.json", encoding="utf-8") as file:
        return next(row["value"] for row in json.load(file)["settings"] if row["key"] == key)
assert setting(sys.argv[2], "CLR,Z") == "300", setting(sys.argv[2], "CLR,Z")
assert setting("127.0.0.4", "CLR,Z") == "600", setting("127.0.0.4", "CLR,Z")
PYTHON

step "Change a setting and store a file there; the printer's memory shows both, and nobody else's does"
tvmgr --address "$chosen" set CLM,S=3
{ printf '\x89PNG\r\n\x1A\n' && head -c 3000 /dev/urandom && printf '\0\0\0\0IEND\xAE\x42\x60\x82'; } >"$work/output/LOGO.PNG"
tvmgr --address "$chosen" put "Z:$work/output/LOGO.PNG"
grep -qx 'CLM,S=3' "$work/memory/$chosen/settings.txt" || fail "the setting is not in the printer's memory"
cmp "$work/output/LOGO.PNG" "$work/memory/$chosen/E/LOGO.PNG"
for other in 127.0.0.2 127.0.0.4; do
  [[ ! -e $work/memory/$other/E ]] || fail "$other holds a file"
  ! grep -qx 'CLM,S=3' "$work/memory/$other/settings.txt" 2>/dev/null || fail "$other was changed"
done
[[ ! -e $work/host-memory || -z $(ls -A "$work/host-memory") ]] || fail "something went to a printer in the host's process"

step "Back up, and compare with the printer's memory"
tvmgr --address "$chosen" backup "Z:$work/output/printer.bak"
python3 - "$work/output/printer.bak" "$work/memory/$chosen" <<'PYTHON' || fail "the backup is not what the printer holds"
import base64, pathlib, re, sys
backup = pathlib.Path(sys.argv[1]).read_bytes()
memory = pathlib.Path(sys.argv[2])
assert backup.startswith(b"^FXLX-R4100SeriesTavira^FS\r\n"), backup[:60]
assert backup.endswith(b"^XA^H(E^XZ\r\n"), backup[-60:]
assert b"CLM,S,3" in backup
payloads = [base64.b64decode(text) for text in re.findall(rb":B64:([A-Za-z0-9+/=\s]+):", backup)]
for file in sorted((memory / "E").iterdir()):
    assert file.read_bytes() in payloads, file.name
PYTHON

step "The printers end when they are told to"
kill -TERM "${started[0]}"
wait "${started[0]}" || fail "lxemu_network ended with code $?"
started=("${started[@]:1}")

step "Twenty printers at once, four of them off, silent, busy and refusing"
"${BASH_SOURCE[0]%/*}/batch_test.py" "$program" "$bin" "$work/batch" "$wine" 8<&- || fail "batch_test.py"

printf '\nThe network test passed.\n'

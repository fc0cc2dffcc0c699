#!/bin/bash
# The program lxemu_network as a script sees it: its "ready", its exit codes, its end. Loopback and free ports only.
# Usage: network_program_test.sh PROGRAM
set -euo pipefail

program=$1
folder=$(mktemp -d)
running=
trap '[[ ! $running ]] || kill -KILL "$running" 2>/dev/null || true; rm -rf "$folder"' EXIT

fail() { echo "FAILED: $*" >&2; exit 1; }

# expect_code CODE ARGUMENT...: the program ends at once with that exit code.
expect_code() {
  local expected=$1 code=0
  shift
  timeout 10 "$program" --memory "$folder/memory" "$@" >"$folder/output" 2>&1 || code=$?
  ((code == expected)) || { cat "$folder/output"; fail "exit code $code instead of $expected: $*"; }
}

# start ARGUMENT...: starts the program and waits for its "ready".
start() {
  : >"$folder/output" # the "ready" of an earlier one must not count
  "$program" --memory "$folder/memory" --port 0 --search-port 0 --listen 127.0.0.9 "$@" >"$folder/output" 2>&1 &
  running=$!
  for ((i = 0; i < 500; i++)); do
    ! grep -qx ready "$folder/output" || return 0
    sleep 0.02
  done
  cat "$folder/output"
  fail "not ready within 10 s"
}

# ends_with CODE: the program that was started ends by itself within 10 s.
ends_with() {
  local code=0
  for ((i = 0; i < 500; i++)); do
    kill -0 "$running" 2>/dev/null || break
    sleep 0.02
  done
  ! kill -0 "$running" 2>/dev/null || fail "still running"
  wait "$running" || code=$?
  running=
  ((code == $1)) || { cat "$folder/output"; fail "ended with $code instead of $1"; }
}

expect_code 0 --help
expect_code 0 --version
grep -q '^lxemu_network [0-9]' "$folder/output" || fail "no version"
expect_code 2 --printer 127.0.0.4:9100
grep -q -- '9100 looks like a port' "$folder/output" || fail "a port taken for a name"
expect_code 2
expect_code 2 --printer 127.0.0
expect_code 2 --printer 0.0.0.0
expect_code 2 --printer 127.0.0.2 --printer 127.0.0.2:other
expect_code 2 --printer 127.0.0.2 --listen 127.0.0.2
expect_code 2 --printer 127.0.0.2 --port 65536
# An address that this machine does not have (one for documentation).
expect_code 1 --printer 192.0.2.1 --port 0

mkdir -p "$folder/memory/127.0.0.2"
printf '[printer]\nlouder = 1\n' >"$folder/memory/127.0.0.2/printer.ini"
start --printer 127.0.0.2 --printer 127.0.0.3 --for 0.3
[[ -d $folder/memory/127.0.0.3 ]] || fail "a memory folder is not there from the start"
ends_with 0
grep -q '127.0.0.2: printer.ini: not understood in .printer.: louder' "$folder/output" || fail "nothing about printer.ini"

# A folder that cannot be made.
code=0
timeout 10 "$program" --memory "$folder/output" --printer 127.0.0.2 --port 0 --search-port 0 >"$folder/problem" 2>&1 || code=$?
((code == 1)) && grep -q 'cannot be written' "$folder/problem" || fail "exit code $code for an unwritable memory folder"

# Two programs on one port: the second one says so.
start --printer 127.0.0.2
port=$(sed -n 's/^printer 127.0.0.2 commands \([0-9]*\) .*/\1/p' "$folder/output")
expect_code 1 --printer 127.0.0.2 --port "$port" --search-port 0 --listen 127.0.0.9

# The end does not wait for a connection that is still open.
exec 5<>"/dev/tcp/127.0.0.2/$port"
printf '\x10\x1B\x1D\x1B\x1B~H(CLR,Z\x10\x1B\x1D\x1B\x1C' >&5
IFS= read -r -t 5 -u 5 answer
[[ $answer == $'\x02^S(CLR,Z,600\x03\r' ]] || fail "answer: $answer"
kill -TERM "$running"
ends_with 0
echo "lxemu_network starts and ends as it says"

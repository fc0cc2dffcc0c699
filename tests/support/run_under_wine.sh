#!/bin/bash
# run_under_wine.sh WINE PROGRAM [ARGUMENT...]: a Windows program with its output in files that are shown at its end.
# Wine's own processes, such as the desktop's, keep the standard error of whoever started them first for as long as they
# live. Were that a pipe, its reader would wait for them long after the program has ended.
folder=$(mktemp -d) && trap 'rm -rf "$folder"' EXIT
# Less than the test command waits: what was said until then is still shown.
timeout --kill-after=5 "${TAVIRA_TEST_SECONDS:-280}" "$@" >"$folder/out" 2>"$folder/err"
status=$?
cat "$folder/out"
cat "$folder/err" >&2
if ((status == 124 || status == 137)); then
  echo "ended after ${TAVIRA_TEST_SECONDS:-280} s; Wine's processes then:" >&2
  ps -eo pid,ppid,stat,etime,wchan:20,args | grep -E '\.exe|wineserver' >&2
fi
exit "$status"

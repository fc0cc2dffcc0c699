#!/bin/bash
# Checks that every C and C++ file is formatted as .clang-format says; `./dev format` puts it right.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

mapfile -t sources < <(git ls-files --cached --others --exclude-standard -- '*.c' '*.cpp' '*.h' '*.hpp' | sort -u)
existing=()
for source in "${sources[@]}"; do
  [[ ! -f $source ]] || existing+=("$source")
done
if ((${#existing[@]} == 0)); then
  echo "format: no source files found"
  exit 1
fi
if ! report=$(printf '%s\0' "${existing[@]}" | xargs -0 -n 16 -P "$(nproc)" clang-format --dry-run -Werror 2>&1); then
  # One line for each file that is off, at its first place.
  grep -E ':[0-9]+:[0-9]+: ' <<<"$report" | sort -t: -u -k1,1 || printf '%s\n' "$report"
  echo "format: run ./dev format"
  exit 1
fi
echo "format: ${#existing[@]} files"

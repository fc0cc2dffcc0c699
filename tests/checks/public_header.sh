#!/bin/bash
# Checks that the public headers compile alone, the C one as C and C++, with every compiler at hand and no warning.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

warnings=(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
count=0 failed=0

# A source file, not the header itself: included twice, and each inline function instantiated by its address.
cat >"$work/alone.c" <<'SOURCE'
#include <tavira/TaviraManager.h>
#include <tavira/TaviraManager.h>
size_t (*text_length)(TvmgrText) = TvmgrTextLength;
void (*text_release)(TvmgrText*) = TvmgrTextRelease;
void (*printer_release)(TvmgrFoundPrinter*) = TvmgrFoundPrinterRelease;
SOURCE
cp "$work/alone.c" "$work/alone.cpp"
# Behind windows.h as a host may have it: with all of its macros.
printf '#include <windows.h>\n#include <tavira/manager.hpp>\n' >"$work/windows.cpp"
layer=(include/tavira/*.hpp)
for file in "${layer[@]}"; do
  printf '#include <%s>\n#include <%s>\n' "${file#include/}" "${file#include/}" >"$work/$(basename "$file").cpp"
done

compile() {
  local compiler=$1 standard=$2 source=$3
  command -v "$compiler" >/dev/null || return 0
  count=$((count + 1))
  "$compiler" -std="$standard" "${warnings[@]}" -Iinclude -fsyntax-only "$source" || {
    echo "$source:1: $compiler -std=$standard does not accept it"
    failed=1
  }
}

for compiler in gcc x86_64-w64-mingw32-gcc-posix clang; do
  compile "$compiler" c11 "$work/alone.c"
done
for compiler in g++ x86_64-w64-mingw32-g++-posix clang++; do
  compile "$compiler" c++17 "$work/alone.cpp"
  compile "$compiler" c++20 "$work/alone.cpp"
  for file in "${layer[@]}"; do
    compile "$compiler" c++17 "$work/$(basename "$file").cpp"
  done
done
compile x86_64-w64-mingw32-g++-posix c++17 "$work/windows.cpp"
if ((count == 0)); then
  echo "public_header: no compiler found"
  failed=1
fi
((failed)) || echo "public_header: ${#layer[@]} headers of the C++ layer and the one for C compile alone, in $count ways"
exit "$failed"

#!/bin/bash
# Checks for what must not stay in the sources: paths of a developer's machine, and marks of unfinished work.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

failed=0

# Prints every line that matches the pattern, and notes it as a problem.
forbid() {
  local what=$1 status=0
  shift
  git grep -nI --untracked "$@" -- . ':!fuzz/corpus' || status=$?
  case $status in
    0) echo "words: $what (above)"; failed=1 ;;
    1) ;; # nothing found
    *) exit "$status" ;;
  esac
}

forbid "marks of unfinished work" -wE 'TOD[O]|FIXM[E]'
# In comments only: as data it stands for a key that no printer has.
forbid "marks of unfinished work" -wE '(//|/[*]|#|^ *[*]).*[^A-Za-z]XX[X]'
forbid "paths of a developer's machine" -E '(^|[^A-Za-z0-9_.:-])/(home|root|work|workspace|Users)/|[A-Z]:[\\/]+User[s][\\/]'
# The place of this very tree, unless that is a place which sources may well name.
root=$PWD
if [[ $root == /*/* && $root != /usr/* ]]; then
  forbid "the path of this tree" -F "$root/"
fi
((failed)) || echo "words: nothing left behind"
exit "$failed"

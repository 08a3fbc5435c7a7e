#!/usr/bin/env bash
# tests/whole/present/examples.sh HOSTRUN REFERENCE - runs every program of the reference: each must end well, leave nothing
# alive, and print what the comments behind its Print statements say.
set -uo pipefail
hostrun=$(realpath "$1")
reference=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0

# A file for each program, with the line where it begins as its name.
awk '/^\[/ { file = /^\[(first steps|example)\]$/ ? FNR ".bas" : ""; next } file { print > file }' "$reference"
groups=$(grep -c '^\[group ' "$reference")
classes=$(grep -cE '^\[(host )?class ' "$reference")
programs=$(find . -name '*.bas' | wc -l)
if [ "$programs" != $((groups + classes)) ]; then
  echo "FAILED: wanted a program for each of $classes classes and $groups groups, found $programs"
  exit 1
fi
for program in *.bas; do
  grep -oP '(^|\s)Print\b.* '"'"' \K.*' "$program" >wanted
  if ! "$hostrun" --leaks "$program" >out 2>err; then
    echo "FAILED: the program at line ${program%.bas}:"
    cat err
    failures=$((failures + 1))
  elif grep -q . wanted && ! diff wanted out; then
    echo "FAILED: the program at line ${program%.bas} prints what stands on the right"
    failures=$((failures + 1))
  fi
done
[ "$failures" = 0 ] || exit 1
echo "$programs programs do what they say"

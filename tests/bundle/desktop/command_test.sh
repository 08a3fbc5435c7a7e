#!/usr/bin/env bash
# tests/bundle/desktop/command_test.sh FINAL-LINK FOLDER - the command says what is wrong in one line, and leaves what
# was there before.
set -uo pipefail
link=$1
folder=$2
failures=0
rm -rf "$folder"
mkdir -p "$folder"
cd "$folder" || exit 1
head -c 300 /dev/zero >zeros.o
echo "the bundle before" >QVXColor

# refuses STATUS LINE ARGUMENT...
refuses() {
  local output status
  output=$("$link" "${@:3}" 2>&1)
  status=$?
  if [ $status != "$1" ] || [ "$output" != "$2" ]; then
    echo "${*:3}: wanted status $1 and \"$2\", found status $status and \"$output\""
    failures=$((failures + 1))
  fi
}

refuses 2 'usage: final_link OBJECT BUNDLE DEBUG SYMBOL' zeros.o QVXColor
refuses 1 'final_link: zeros.o: wanted the magic number 0xFEEDFACE, found 0x0' zeros.o QVXColor debug Entry
refuses 1 'final_link: none.o: wanted an object to read, found none' none.o QVXColor debug Entry
if [ "$(cat QVXColor)" != "the bundle before" ]; then
  echo "wanted the bundle before, found it changed"
  failures=$((failures + 1))
fi
if [ -e debug ]; then
  echo "wanted no file for debuggers, found one"
  failures=$((failures + 1))
fi
exit $failures

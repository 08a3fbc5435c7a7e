#!/usr/bin/env bash
# tests/whole/architecture/includes_refused.sh - includes.sh passes a tree that keeps the rules, and names each
# include that breaks one.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
failures=0

# put FILE LINE... - a file of the tree.
put() {
  mkdir -p "$(dirname "$tree/$1")"
  printf '%s\n' "${@:2}" >"$tree/$1"
}

# expect STATUS TEXT WHAT - runs the check, and wants the exit status and, if it is not empty, the text.
expect() {
  local output status=0
  output=$("$here/includes.sh" "$tree" "$here/rooms.txt" 2>&1) || status=$?
  if [ $status != "$1" ] || [[ $output != *"$2"* ]]; then
    echo "$3: wanted status $1 and \"$2\", found status $status and:"
    echo "$output"
    failures=$((failures + 1))
  fi
}

# refused FILE INCLUDED TEXT - one include, which is named and goes again.
refused() {
  put "$1" "#include \"$2\""
  expect 1 "$3" "$1 includes $2"
  rm "$tree/$1"
}

put bundle/plugin/entry.cpp '#include "bundle/classes/classes.h"' '#include <cstdint>'
put libcocoa/lists/NSColorList+Files.m '#import "libcocoa/colours/exact_colours.h"'
put hostrun/host/strings.h '#include "bundle/host/types.h"'
put hostrun/main.cpp '#include "hostrun/commands/run.h"'
expect 0 '' 'a tree that keeps the rules'

refused bundle/host/services.cpp bundle/bridge/guard.h 'bundle/host/services.cpp: wanted'
refused bundle/classes/NSColor.cpp bundle/desktop/stdio.h 'found "bundle/desktop/stdio.h"'
refused bundle/bridge/guard.cpp hostrun/host/host.h 'found "hostrun/host/host.h"'
refused hostrun/host/host.cpp bundle/host/services.h 'found "bundle/host/services.h"'
refused hostrun/sibling/images.cpp libcocoa/runtime/host_support.h 'found "libcocoa/runtime/host_support.h"'
refused libcocoa/colours/colour_archive.h libcocoa/lists/colour_list_reader.h 'the row of libcocoa/colours allows'
refused libcocoa/runtime/start.m tests/libcocoa/paths.h 'found "tests/libcocoa/paths.h"'
refused libcocoa/runtime/start.m exported.h 'found "exported.h"'
refused libcocoa/sounds/NSSound.m libcocoa/runtime/exported.h 'no row for the room libcocoa/sounds'

put libcocoa/profiles/above.c '#include "libcocoa/profiles/below.h"'
put libcocoa/profiles/below.c '#include "libcocoa/profiles/above.h"'
expect 1 'wanted no circle in libcocoa' 'a circle of two sources'

exit $failures

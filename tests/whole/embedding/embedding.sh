#!/usr/bin/env bash
# tests/whole/embedding/embedding.sh HOST BUNDLE PLATFORM PAGE LOADER DESKTOP-BUNDLE - the smallest host says what
# docs/embedding.md shows, as a new host and as an old one and over both files of the bundle, and refuses what it can't
# use with one line. Ends with 77 where the desktop bundle has not been built, after the rest.
set -uo pipefail
host=$1 bundle=$2 platform=$3 page=$4 loader=$5 desktop=$6
failures=0
fail() {
  printf 'embedding: %s\n' "$*" >&2
  failures=$((failures + 1))
}

# shown COMMAND: what the page shows under "$ COMMAND".
shown() {
  awk -v command="\$ $1" 'inside && (/^\$/ || /^```/) { exit } inside { print } $0 == command { inside = 1 }' "$page"
}

# runs_as_shown COMMAND [ARGUMENT...]
runs_as_shown() {
  local command=$1 wanted found
  shift
  wanted=$(shown "$command")
  [ -n "$wanted" ] || fail "wanted the output of \"$command\" in $page, found none"
  found=$("$host" "$opened" "$platform" "$@" 2>&1) || fail "wanted status 0 of \"$command\", found $?"
  [ "$found" = "$wanted" ] || fail "wanted of \"$command\" $wanted, found $found"
}

# refuses TEXT ARGUMENT...
refuses() {
  local text=$1 found status
  shift
  found=$("$host" "$@" 2>&1)
  status=$?
  [ $status = 2 ] || fail "wanted status 2 for \"$*\", found $status"
  [[ $found = "host: "*"wanted "*"$text"* ]] || fail "wanted an error with \"$text\" for \"$*\", found $found"
  [ "$(wc -l <<<"$found")" = 1 ] || fail "wanted one line for \"$*\", found $found"
}

opened=$bundle
runs_as_shown './host build/QVXColor.so build/libcocoa.so'
runs_as_shown './host build/QVXColor.so build/libcocoa.so 2011.0' 2011.0
refuses 'found 0 arguments'
refuses 'found 1 arguments' "$bundle"
refuses 'a library that loads' "$bundle" "$page"
refuses 'a library that loads' "$page" "$platform"
refuses 'REALPluginMain' "$platform" "$platform"
refuses 'a desktop bundle' "$bundle" "$platform" 2015.0 "$loader"
refuses 'QVXOpenDesktopBundle' "$bundle" "$platform" 2015.0 "$platform"
[ $failures = 0 ] || exit 1

if [ ! -d "$desktop" ]; then
  echo "embedding: wanted the desktop bundle $desktop, found none; tools/desktop builds it"
  exit 77
fi
opened=$desktop
runs_as_shown './host build/desktop/QVXColor.bundle build/libcocoa.so 2015.0 build/libdesktoploader.so' 2015.0 "$loader"
old=$("$host" "$desktop" "$platform" 2011.0 "$loader" 2>&1)
[ "$old" = "$(shown './host build/QVXColor.so build/libcocoa.so 2011.0')" ] || fail "as an old host over $desktop: $old"
exit $((failures > 0))

#!/usr/bin/env bash
# tests/whole/embedding/embedding.sh HOST BUNDLE PLATFORM PAGE - the smallest host says what docs/embedding.md shows, as
# a new host and as an old one, and refuses what it can't use with one line.
set -uo pipefail
host=$1 bundle=$2 platform=$3 page=$4
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
  found=$("$host" "$bundle" "$platform" "$@" 2>&1) || fail "wanted status 0 of \"$command\", found $?"
  [ "$found" = "$wanted" ] || fail "wanted of \"$command\" $wanted, found $found"
}

# refuses TEXT ARGUMENT...
refuses() {
  local text=$1 found status
  shift
  found=$("$host" "$@" 2>&1)
  status=$?
  [ $status = 2 ] || fail "wanted status 2 for \"$*\", found $status"
  [[ $found = "host: wanted "*"$text"* ]] || fail "wanted an error with \"$text\" for \"$*\", found $found"
  [ "$(wc -l <<<"$found")" = 1 ] || fail "wanted one line for \"$*\", found $found"
}

runs_as_shown './host build/QVXColor.so build/libcocoa.so'
runs_as_shown './host build/QVXColor.so build/libcocoa.so 2011.0' 2011.0
refuses 'found 0 arguments'
refuses 'found 1 arguments' "$bundle"
refuses 'a library that loads' "$bundle" "$page"
refuses 'a library that loads' "$page" "$platform"
refuses 'REALPluginMain' "$platform" "$platform"
exit $((failures > 0))

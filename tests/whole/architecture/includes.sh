#!/usr/bin/env bash
# tests/whole/architecture/includes.sh ROOT ROOMS - checks that includes point where the table of rooms allows.
#
# Prints a line for each include that does not, and for each circle; exit status 1 if there is any.
set -euo pipefail
rooms=$(realpath "$2")
cd "$1"

# "file included-file" of every include that names a file of this project.
includes() {
  grep -rnE '^[[:space:]]*#[[:space:]]*(include|import)[[:space:]]*"' "$@" |
    sed -E 's/^([^:]*):[0-9]+:[^"]*"([^"]*)".*/\1 \2/'
}

check_rooms() {
  includes bundle libcocoa hostrun | awk -v table="$rooms" '
    function room(file,   part) {
      return split(file, part, "/") > 2 ? part[1] "/" part[2] : part[1] "/."
    }
    BEGIN {
      while ((getline line < table) > 0) {
        if (line ~ /^#/ || line !~ /^[a-z]+\/[a-z.]+:/) continue
        name = substr(line, 1, index(line, ":") - 1)
        known[name] = 1
        count = split(substr(line, index(line, ":") + 1), targets, " ")
        for (i = 1; i <= count; i++) allowed[name, targets[i]] = 1
      }
    }
    {
      from = room($1); to = room($2)
      if (!(from in known)) found = "no row for the room " from "; add one to " table
      else if (from == to || (from, to) in allowed || (from, $2) in allowed) next
      else found = "\"" $2 "\"; move what is shared down, or pass it in"
      print "includes: " $1 ": wanted an include that the row of " from " allows, found " found
      bad = 1
    }
    END { exit bad }'
}

check_circles() {
  local houses house circles bad=0
  read -ra houses < <(sed -n 's/^no circle://p' "$rooms") || houses=()
  for house in "${houses[@]}"; do
    circles=$(includes "$house" | sed -E 's/\.[a-zA-Z]+( |$)/\1/g' | awk '$1 != $2' | tsort 2>&1 >/dev/null || true)
    [ -z "$circles" ] && continue
    bad=1
    echo "includes: wanted no circle in $house, found one; move what both need into a file below them:"
    sed -n 's/^tsort: \(.*\/.*\)/  \1/p' <<<"$circles"
  done
  return $bad
}

status=0
check_rooms || status=1
check_circles || status=1
exit $status

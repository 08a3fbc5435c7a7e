#!/usr/bin/env bash
# tests/desktop_only.sh BUNDLE COMMAND... - runs the command where the desktop bundle has been built; status 77 elsewhere.
[ -e "$1" ] || {
  echo "skipped: wanted $1, found none; tools/desktop builds it"
  exit 77
}
shift
exec "$@"

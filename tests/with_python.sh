#!/usr/bin/env bash
# tests/with_python.sh TEST [ARGUMENT...] - runs a test with Debian's own python, whose modules Debian's are; ends with 77
# where there is none.
if ! [ -x /usr/bin/python3 ]; then
  echo "skipped: wanted /usr/bin/python3, found none; tools/bootstrap --browser installs it"
  exit 77
fi
exec /usr/bin/python3 -B "$@"

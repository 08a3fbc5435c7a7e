#!/usr/bin/env bash
# tests/bundle/desktop/read_with.sh BUILT TEST [ARGUMENT...] - runs a test that reads the desktop bundle with other tools,
# or ends with 77 where the bundle can't be built or read.
set -euo pipefail
if [ "$1" != ON ]; then
  echo "skipped: wanted LLVM 14 and libc++'s headers to build the desktop bundle, found none; tools/desktop installs them"
  exit 77
fi
# Debian's modules are its own python's.
python=/usr/bin/python3
for program in llvm-objdump-14 llvm-nm-14 llvm-readobj-14 llvm-dwarfdump-14 file $python; do
  if ! command -v "$program" >/dev/null; then
    echo "skipped: wanted $program, found none; tools/bootstrap --desktop installs it"
    exit 77
  fi
done
if ! $python -c 'import macholib' 2>/dev/null; then
  echo "skipped: wanted macholib for $python, found none; tools/bootstrap --desktop installs it"
  exit 77
fi
exec $python -B "$(dirname "$0")/$2" "${@:3}"

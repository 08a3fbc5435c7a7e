#!/usr/bin/env bash
# tests/hostrun/programs/other_platform.sh HOSTRUN TABLE-TEST BUNDLE PLATFORM - a platform library without QVXEmptyPool:
# what a call autoreleases goes all the same, and programs print what they print.
set -uo pipefail
hostrun=$1 tests=$2 bundle=$3 platform=$4
examples=$(dirname "$0")/../../../examples
folder=$(mktemp -d)
other=$(mktemp "$(dirname "$platform")/libother-XXXXXX.so") # beside it, where it finds its own libraries
trap 'rm -rf "$folder" "$other"' EXIT
failed=0

LC_ALL=C sed 's/\x00QVXEmptyPool\x00/\x00QVXEmptyPooX\x00/g' "$platform" >"$other"
if cmp -s "$platform" "$other"; then
  echo "wanted QVXEmptyPool in $platform, found none"
  exit 1
fi
if ! "$tests" --gtest_filter='CallPool.*' --bundle "$bundle" --platform "$other" >"$folder/out" 2>&1; then
  cat "$folder/out"
  failed=1
fi
for program in palette components; do
  "$hostrun" --leaks --bundle "$bundle" --platform "$platform" "$examples/$program.bas" >"$folder/wanted" 2>&1
  "$hostrun" --leaks --bundle "$bundle" --platform "$other" "$examples/$program.bas" >"$folder/out" 2>&1
  if ! [ -s "$folder/wanted" ] || ! diff "$folder/wanted" "$folder/out"; then
    echo "wanted of $program.bas what it prints over $platform"
    failed=1
  fi
done
exit $failed

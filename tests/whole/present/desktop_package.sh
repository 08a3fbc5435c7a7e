#!/usr/bin/env bash
# tests/whole/present/desktop_package.sh SOURCE BUNDLE HOSTRUN - packs the desktop bundle, unpacks it, and runs a program from there.
set -uo pipefail
source=$(realpath "$1")
bundle=$(realpath "$2")
hostrun=$(realpath "$3")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}

version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' "$source/CMakeLists.txt")
name=qvxcolor-$version-desktop
"$source/tools/package_desktop" "$bundle" "$work" || exit 1
(cd "$work" && cmake -E tar xf "$name.zip") || fail "$name.zip can be unpacked"
found=$(cd "$work/$name" && find . -type f | sort | paste -sd' ')
wanted='./INSTALL.md ./LICENSE ./QVXColor.bundle/Contents/Info.plist ./QVXColor.bundle/Contents/MacOS/QVXColor'
[ "$found" = "$wanted" ] || fail "the files are $wanted; found $found"
cmp "$bundle/Contents/MacOS/QVXColor" "$work/$name/QVXColor.bundle/Contents/MacOS/QVXColor" || fail "the bundle is the built one"
grep -qF "<string>$version</string>" "$work/$name/QVXColor.bundle/Contents/Info.plist" || fail "Info.plist has the version $version"
grep -rlF "$source" "$work/$name" && fail "the package names no folder of the machine that built it"
"$hostrun" --bundle "$work/$name/QVXColor.bundle" "$source/examples/first-colors.bas" 2>&1 | cmp - "$source/examples/first-colors.out" ||
  fail "the unpacked bundle runs a program"
"$source/tools/package_desktop" "$bundle" "$work/again" && cmp "$work/$name.zip" "$work/again/$name.zip" ||
  fail "packed again, it is the same package"
[ $failures = 0 ]

#!/usr/bin/env bash
# tests/whole/crashes/crashes.sh SOURCE BUILD HOST PLATFORM LOADER - a deliberate crash in each file of the bundle, as users
# have it; the address that the host reports becomes the line in the source, by the packed symbols and by the commands that
# docs/crashes.md shows. Ends with 77, after the rest, where the desktop bundle or what reads its symbols is missing.
set -uo pipefail
export LC_ALL=C
source=$(realpath "$1")
build=$(realpath "$2")
host=$3 platform=$4 loader=$5
page=$source/docs/crashes.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}

# crash ARGUMENT...: the offset that the crash report holds.
crash() {
  local said
  said=$("$host" "$@")
  [ $? = 3 ] || fail "the host crashes and reports: $said" >&2
  sed -n 's/^signal 11 for 0x28, in the bundle at //p' <<<"$said"
}

# shown COMMAND: that the page shows it.
shown() { grep -qF -e "$1" "$page" || fail "docs/crashes.md shows $1"; }

# The class data of an object that is none is read here for the first time.
crashing=$source/bundle/bridge/instances.h
wanted=$(awk '/^inline void DestroyInstance\(/ { inside = 1 } inside && /native == nullptr/ { print NR; exit }' "$crashing")
# leads_there WHAT SAID: that the innermost function and line are those of the crash. Before the file's name may stand the
# folder that the compiler worked in, build.
leads_there() {
  grep -qE "DestroyInstance" <<<"$2" || fail "$1 names the function, found $2"
  grep -qE -m1 "^(\./)?(build/\.{1,2}/)?bundle/bridge/instances\.h:$wanted(:[0-9]+)?( |$)" <<<"$2" ||
    fail "$1 names bundle/bridge/instances.h:$wanted, found $2"
}

if [ ! -d "$build/desktop/QVXColor.bundle.dSYM" ]; then
  echo "wanted the desktop bundle with its symbols, found none; tools/desktop builds it"
  exit 77
fi
env PACKING_LEVEL=none "$source/tools/package_symbols" "$build" "$work" || exit 1
tar -xf "$work"/qvxcolor-*-symbols.tar.xz -C "$work" || fail "the .tar.xz can be unpacked"
dpkg-deb -x "$work"/qvxcolor-dbgsym_*.deb "$work/deb" || fail "the .deb can be unpacked"
symbols=$(echo "$work"/qvxcolor-*-symbols)
grep -rlF -e "$source" "$symbols" && fail "the symbols name no folder of the machine that built them"

# The ELF file, without symbols as in the package.
strip -o "$work/QVXColor.so" "$build/QVXColor.so"
at=$(crash "$work/QVXColor.so" "$platform")
id=$(readelf --notes "$work/QVXColor.so" | sed -n 's/^ *Build ID: //p')
cmp "$symbols/QVXColor.so.debug" "$work/deb/usr/lib/debug/.build-id/${id:0:2}/${id:2}.debug" ||
  fail "the .deb has the symbols where debuggers look for that build id"
[ "$(readelf --notes "$symbols/QVXColor.so.debug" | sed -n 's/^ *Build ID: //p')" = "$id" ] || fail "both have one build id"
[[ $(addr2line -e "$work/QVXColor.so" "$at") = '??:'* ]] || fail "the shipped file alone tells nothing"
leads_there "the ELF file's symbols" "$(addr2line -Cfi -e "$symbols/QVXColor.so.debug" "$at")"
shown 'readelf --notes QVXColor.so'
shown 'addr2line -Cfi -e QVXColor.so.debug'

# The desktop's file. It has no symbols in it.
missing=
for program in llvm-symbolizer-14 llvm-dwarfdump-14; do command -v $program >/dev/null || missing+=" $program"; done
if [ -z "$missing" ]; then
  file=$build/desktop/QVXColor.bundle/Contents/MacOS/QVXColor
  debug=$symbols/QVXColor.bundle.dSYM/Contents/Resources/DWARF/QVXColor
  at=$(crash "$build/desktop/QVXColor.bundle" "$platform" "$loader")
  uuid() { llvm-dwarfdump-14 --uuid "$1" | cut -d' ' -f2; }
  [ -n "$(uuid "$file")" ] && [ "$(uuid "$file")" = "$(uuid "$debug")" ] || fail "both have one UUID"
  found=$(llvm-dwarfdump-14 --verify "$debug" 2>&1) || fail "the desktop's symbols are as debuggers want them: $found"
  llvm-symbolizer-14 --obj="$file" "$at" | grep -q '^??:0' || fail "the shipped bundle alone tells nothing"
  leads_there "the desktop's symbols" "$(llvm-symbolizer-14 --obj="$debug" "$at")"
  cmp "$debug" "$work/deb/usr/lib/debug/qvxcolor/QVXColor.bundle.dSYM/Contents/Resources/DWARF/QVXColor" ||
    fail "the .deb has the same symbols as the .tar.xz"
  shown 'llvm-dwarfdump-14 --uuid QVXColor.bundle/Contents/MacOS/QVXColor'
  shown 'llvm-symbolizer-14 --obj=QVXColor.bundle.dSYM/Contents/Resources/DWARF/QVXColor'
fi
[ $failures = 0 ] || exit 1
if [ -n "$missing" ]; then
  echo "wanted$missing to read the desktop's symbols, found none; tools/bootstrap --desktop installs it"
  exit 77
fi

#!/usr/bin/env bash
# tests/bundle/desktop/reproducible.sh SOURCE BUILD LINK FOLDER BUILT - builds the desktop bundle once more, from a copy of
# the sources in FOLDER, and wants the same files. Ends with 77 where it can't be built.
#
# The commands are those of the build, with the other paths in them.
set -euo pipefail
source=$1
build=$2
ours=$3
folder=$4
if [ "$5" != ON ]; then
  echo "skipped: wanted LLVM 14 and libc++'s headers to build the desktop bundle, found none; tools/desktop installs them"
  exit 77
fi
commands=$(ninja -C "$build" -t commands desktop | grep -E 'clang\+\+-14|llvm-link-14|/final_link .*REALPluginMain')
[ "$(wc -l <<<"$commands")" -gt 15 ] || {
  echo "wanted the commands of the desktop bundle, found only: $commands"
  exit 1
}

rm -rf "$folder"
mkdir -p "$folder/source" "$folder/build"
cp -r "$source/bundle" "$folder/source/"
rooms=$(find "$build/houses/bundle/desktop" -type d -printf "$folder/build/houses/bundle/desktop/%P\n")
mkdir -p $rooms "$folder/build/desktop/QVXColor.bundle/Contents/MacOS" \
  "$folder/build/desktop/QVXColor.bundle.dSYM/Contents/Resources/DWARF"
# Names that may lie in each other are taken out first, the longest first; the unpacked headers and the link that was
# built stay. What the build does with the compiler's lists of headers is left out.
sed -e "s|$ours|@LINK@|g; s|$source/build/libcxx|@HEADERS@|g; s|$build|@BUILD@|g; s|$source|@SOURCE@|g" \
  -e "s|@LINK@|$ours|g; s|@HEADERS@|$source/build/libcxx|g; s|@BUILD@|$folder/build|g; s|@SOURCE@|$folder/source|g" \
  -e 's| && [^ ]*cmake -E cmake_transform_depfile .*||' <<<"$commands" >"$folder/commands"
bash -eu "$folder/commands"

for file in QVXColor.bundle/Contents/MacOS/QVXColor QVXColor.bundle.dSYM/Contents/Resources/DWARF/QVXColor; do
  cmp "$build/desktop/$file" "$folder/build/desktop/$file"
done

#!/usr/bin/env bash
# tests/whole/tools/packing.sh SOURCE - tools/packing.sh over a small folder: the packages depend on the files in it and on
# nothing else. Which bytes the build gives is tools/reproducible's to compare.
set -uo pipefail
source=$(realpath "$1")
# Where there is one, on a file system that lists a folder's files in the order that they were made in.
[ ! -d /dev/shm ] || export TMPDIR=/dev/shm
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}

# pack FOLDER: packs FOLDER/thing in every format, beside it, at the time that the environment gives.
pack() {
  # shellcheck disable=SC2016 # expanded inside
  bash -euc '. "$1/tools/packing.sh"
    pack_tar "$2/thing" "$2/thing.tar.xz"
    [ -z "$(command -v zip)" ] || pack_zip "$2/thing" "$2/thing.zip"
    printf "%s\n" "Package: thing" "Version: 1" "Architecture: all" "Maintainer: nobody <nobody@localhost>" "Description: thing" |
      pack_deb "$2/thing" "$2/thing.deb"' pack "$source" "$1"
}

# thing FOLDER FILE...: makes FOLDER/thing with these files, in this order, each of which holds its name.
thing() {
  local folder=$1 file
  shift
  for file in "$@"; do
    mkdir -p "$folder/thing/$(dirname "$file")"
    echo "$file" >"$folder/thing/$file"
  done
  ln -s small/a "$folder/thing/link"
}

# same NAME ONE OTHER: the packages of both folders are the same.
same() {
  local format
  for format in tar.xz deb zip; do
    [ ! -e "$2/thing.$format" ] || cmp "$2/thing.$format" "$3/thing.$format" || fail "$1: the .$format is the same"
  done
}

command -v zip >/dev/null || echo "without zip, which tools/bootstrap --desktop installs, no .zip is compared"
export SOURCE_DATE_EPOCH=1700000000
thing "$work/one" small/a small/B zoë.txt Zebra
pack "$work/one"
(
  umask 077
  other="$work/a folder of another name"
  thing "$other" Zebra zoë.txt small/B small/a
  touch -d 2001-02-03 "$other/thing/Zebra"
  [ "$(id -u)" != 0 ] || chown -R 1234:1234 "$other/thing"
  LC_ALL=C.UTF-8 TZ=Asia/Tokyo pack "$other"
)
same "another folder, order, owner, umask, time, locale and time zone" "$work/one" "$work/a folder of another name"

[ "$(dpkg-deb -c "$work/one/thing.deb" | awk '{ print $2 }' | sort -u)" = root/root ] || fail "the .deb belongs to root"
tar -tJvf "$work/one/thing.tar.xz" | awk '{ print $2 }' | grep -qvxF 0/0 && fail "the .tar.xz belongs to nobody of this machine"
(mkdir "$work/open" && dpkg-deb -R "$work/one/thing.deb" "$work/open" && cd "$work/open" && md5sum --quiet -c DEBIAN/md5sums) ||
  fail "the .deb has the sums of its files"
[ "$(wc -l <"$work/open/DEBIAN/md5sums")" = 4 ] || fail "the .deb has the sums of all 4 files"

mkdir -p "$work/sums/packages"
cp "$work"/one/thing.* "$work/sums/packages/"
# shellcheck disable=SC2016 # expanded inside
bash -euc '. "$1/tools/packing.sh"; sum_packages "$2"' sum "$source" "$work/sums/packages"
(cd "$work/sums/packages" && sha256sum --quiet -c SHA256SUMS) || fail "the sums are those of the packages"
[ "$(cut -c67- "$work/sums/packages/SHA256SUMS")" = "$(cd "$work/one" && printf '%s\n' thing.*)" ] || fail "each package has its sum"
[ "$(ls "$work/sums")" = packages ] || fail "nothing else is left"

thing "$work/later" small/a small/B zoë.txt Zebra
SOURCE_DATE_EPOCH=1800000000 pack "$work/later"
cmp -s "$work/one/thing.tar.xz" "$work/later/thing.tar.xz" && fail "another time gives another package"

# The time of a tree without a history.
mkdir -p "$work/tree/tools"
cp "$source/tools/packing.sh" "$work/tree/tools/"
cp "$source/CMakeLists.txt" "$work/tree/"
# shellcheck disable=SC2016
epoch() { env -u SOURCE_DATE_EPOCH bash -euc '. "$1/tools/packing.sh"; echo "$SOURCE_DATE_EPOCH"' epoch "$work/tree" 2>&1; }
printf '# Changes\n\n## 2.0 (2024-02-29)\n\n## 1.0 (2023-01-01)\n' >"$work/tree/CHANGELOG.md"
[ "$(epoch)" = 1709164800 ] || fail "without a history the newest version's day counts: found $(epoch)"
printf '# Changes\n\n## 2.0\n' >"$work/tree/CHANGELOG.md"
[[ "$(epoch)" = 'package: wanted "## VERSION (YEAR-MONTH-DAY)" in CHANGELOG.md, found none'* ]] || fail "a day is wanted: $(epoch)"
grep -qE '^## [0-9.]+ \([0-9]{4}-[0-9]{2}-[0-9]{2}\)$' "$source/CHANGELOG.md" || fail "this project's CHANGELOG.md names a day"
[ $failures = 0 ]

# tools/packing.sh - read by the tools that pack: the same bytes from the same files, wherever and whenever they are packed.
#
# Sets SOURCE_DATE_EPOCH, the one time that everything in a package bears, unless it is set already: that of the commit, or
# of the day that CHANGELOG.md names for the newest version where the tree is no clone, or git is not installed.
# shellcheck shell=bash disable=SC2034 # read by the tools
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export LC_ALL=C TZ=UTC
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' "$root/CMakeLists.txt")

if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
  if [ -e "$root/.git" ] && command -v git >/dev/null; then
    SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct)
  else
    day=$(sed -nE 's/^## [0-9.]+ \(([0-9]{4}-[0-9]{2}-[0-9]{2})\)$/\1/p' "$root/CHANGELOG.md" | head -n 1)
    [ -n "$day" ] || {
      echo "package: wanted \"## VERSION (YEAR-MONTH-DAY)\" in CHANGELOG.md, found none; name the day, or set SOURCE_DATE_EPOCH" >&2
      exit 1
    }
    SOURCE_DATE_EPOCH=$(date -d "$day" +%s)
  fi
fi
export SOURCE_DATE_EPOCH
# How hard xz tries, 0 to 9; "none" leaves it out: the same files in packages that tar and dpkg read as well. A test that
# unpacks them at once has no use for small ones.
PACKING_LEVEL=${PACKING_LEVEL:-6}
compress=(xz "-$PACKING_LEVEL" --threads=1)
compress_deb=(-Zxz "-z$PACKING_LEVEL")
if [ "$PACKING_LEVEL" = none ]; then
  compress=(cat)
  compress_deb=(-Znone)
fi

# settle FOLDER: everything in it gets the one time, and the usual rights.
settle() {
  chmod -R u=rwX,go=rX "$1"
  find "$1" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
}

# pack_tar FOLDER FILE: packs a folder, under its own name, as FILE (.tar.xz).
pack_tar() {
  settle "$1"
  tar --create --format=gnu --sort=name --owner=0 --group=0 --numeric-owner \
    --directory "$(dirname "$1")" "$(basename "$1")" | "${compress[@]}" >"$2"
}

# pack_zip FOLDER FILE: packs a folder, under its own name, as FILE (.zip).
pack_zip() {
  settle "$1"
  rm -f "$2"
  (cd "$(dirname "$1")" && find "$(basename "$1")" | sort | zip -9 -X -q -@ "$2")
}

# pack_deb FOLDER FILE: packs what lies in FOLDER as it is to lie below /. The fields of the control file come from
# standard input.
pack_deb() {
  local sums size
  settle "$1"
  sums=$(cd "$1" && find . -type f -printf '%P\0' | sort -z | xargs -0 md5sum)
  # The sum of the files: what a folder takes depends on the disk.
  size=$(find "$1" -type f -printf '%s\n' | awk '{ kilobytes += int(($1 + 1023) / 1024) } END { print kilobytes }')
  mkdir "$1/DEBIAN"
  printf '%s\n' "$sums" >"$1/DEBIAN/md5sums"
  { cat && echo "Installed-Size: $size"; } >"$1/DEBIAN/control"
  settle "$1/DEBIAN"
  dpkg-deb --root-owner-group --threads-max=1 "${compress_deb[@]}" --build "$1" "$2" >/dev/null
  rm -r "$1/DEBIAN"
}

# sum_packages FOLDER: writes the sums of what lies in FOLDER, as its SHA256SUMS.
sum_packages() {
  (cd "$1" && rm -f SHA256SUMS && sha256sum -- * >../SHA256SUMS && mv ../SHA256SUMS .)
}

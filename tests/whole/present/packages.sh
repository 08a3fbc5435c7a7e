#!/usr/bin/env bash
# tests/whole/present/packages.sh SOURCE BUILD CXX [whole] - packs, unpacks both packages into fresh folders, and runs programs from
# them in a root directory that holds the C and C++ run-time, the package, and nothing else: the .deb in the C locale, the
# tarball, which holds the same files, in a German one. "whole" tries each in both.
set -uo pipefail
export LC_ALL=C
source=$(realpath "$1")
build=$(realpath "$2")
cxx=$3
extent=${4:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}

# A locale with other letters, numbers and words than C's. Making it takes longer than what is tried in it: it stays.
german=()
locales=$build/locales
mkdir -p "$locales"
[ -d "$locales/de_DE.UTF-8" ] ||
  { localedef -i de_DE -f UTF-8 "$work/de_DE.UTF-8" 2>/dev/null && mv "$work/de_DE.UTF-8" "$locales/"; }
if [ -d "$locales/de_DE.UTF-8" ]; then
  german=(LC_ALL=de_DE.UTF-8 LANGUAGE=de)
else
  echo "without the package locales nothing is tried in a German locale"
fi

env PACKING_LEVEL=none LOCPATH="$locales" ${german[@]+"${german[@]}"} "$source/tools/package_linux" "$build" "$work/packages" || exit 1
deb=$(echo "$work"/packages/*.deb)
tarball=$(echo "$work"/packages/*.tar.xz)
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' "$source/CMakeLists.txt")

[ "$(dpkg-deb -f "$deb" Package Version Architecture | cut -d' ' -f2 | paste -sd' ')" = "qvxcolor $version amd64" ] ||
  fail "the .deb says what it is: $(dpkg-deb -f "$deb" Package Version Architecture | paste -sd' ')"
for package in "$deb" "$tarball"; do
  size=$(stat -c %s "$package")
  [ "$size" -le 62000000 ] || fail "without compression, a package has at most 62 MB: $(basename "$package") has $size bytes"
done
dpkg-deb -f "$deb" Depends | grep -q libc6-i386 || fail "the .deb wants the 32-bit C run-time"

# The run-time of the machine, where the 32-bit loader finds it without a configuration.
base=$work/base
mkdir -p "$base"/{lib,lib32,etc,tmp,proc,dev,root,locale}
[ ${#german[@]} = 0 ] || cp -r "$locales/de_DE.UTF-8" "$base/locale/"
cp -L /lib/ld-linux.so.2 "$base/lib/"
for library in libc.so.6 libm.so.6 libdl.so.2 libpthread.so.0 librt.so.1 libresolv.so.2 libgcc_s.so.1 libstdc++.so.6; do
  cp -L "$("$cxx" -m32 -print-file-name="$library")" "$base/lib32/" || exit 1
done
gconv=$(dirname "$("$cxx" -m32 -print-file-name=libc.so.6)")/gconv
for folder in "$gconv" /usr/lib32/gconv; do
  [ -d "$folder" ] && mkdir -p "$base/usr/lib32" && cp -r "$(realpath "$folder")" "$base/usr/lib32/" && break
done
echo 'root:x:0:0:root:/root:/' >"$base/etc/passwd"

isolate=(unshare --mount --pid --fork)
[ "$(id -u)" = 0 ] || isolate+=(--map-root-user)
can_isolate=yes
"${isolate[@]}" true 2>"$work/why" || can_isolate=no

# inside ROOT COMMAND...: runs it with ROOT as the root directory, in the locale that the array "locale" sets.
locale=()
inside() {
  local root=$1
  shift
  # shellcheck disable=SC2016 # expanded inside
  env -i PATH="$PATH" HOME=/root LOCPATH=/locale ${locale[@]+"${locale[@]}"} "${isolate[@]}" sh -c 'mount -t proc proc "$1/proc" && root=$1 && shift && exec chroot "$root" "$@"' sh "$root" "$@"
}

# try NAME ROOT PREFIX: the package below ROOT/PREFIX.
try() {
  local name=$1 root=$2 prefix=$3 program found
  local hostrun=$prefix/bin/hostrun documents=$prefix/share/doc/qvxcolor
  for wanted in copyright changelog.gz LICENSE NOTICE CHANGELOG.md README.md reference.txt third-party/libgnustep-base1.28 examples/first-colors.bas; do
    [ -s "$root$documents/$wanted" ] || fail "$name has $wanted"
  done
  for wanted in man/man1/hostrun.1.gz bash-completion/completions/hostrun zsh/vendor-completions/_hostrun fish/vendor_completions.d/hostrun.fish; do
    [ -s "$root$prefix/share/$wanted" ] || fail "$name has share/$wanted"
  done
  # Compressed without a name and a time: the bytes 4 to 7 are the time, and bit 3 of byte 3 tells of a name.
  for wanted in man/man1/hostrun.1.gz doc/qvxcolor/changelog.gz; do
    [ "$(od -An -tx1 -j3 -N5 "$root$prefix/share/$wanted")" = ' 00 00 00 00 00' ] || fail "$name has $wanted without a time"
  done
  gzip -dc "$root$documents/changelog.gz" | cmp - "$source/CHANGELOG.md" || fail "$name says what changed"
  if grep -rlqF -e "$source" -e "$build" "$root$prefix"; then
    fail "$name names no folder of the machine that built it: $(grep -rlF -e "$source" -e "$build" "$root$prefix" | head -n 3)"
  fi
  objdump -p "$root$hostrun" "$root$prefix"/lib*/qvxcolor/libcocoa.so "$root$prefix"/lib/*/qvxcolor/libcocoa.so 2>/dev/null |
    grep -E 'R(UN)?PATH' | grep -qvF '$ORIGIN' && fail "$name looks for libraries relative to itself only"

  # Nothing but the C and C++ run-time comes from outside.
  found=$(cd "$root$documents/examples" && env -i LD_DEBUG=libs "$root$hostrun" first-colors.bas 2>&1 |
    sed -n 's/.*calling init: //p' | grep -v "^$root" |
    grep -vE '/(ld-linux|libc|libm|libdl|libpthread|librt|libresolv|libgcc_s|libstdc\+\+)\.so\.[0-9]+$|/gconv/|/libnss_')
  [ -z "$found" ] || fail "$name needs nothing from outside, found $found"

  if [ "$name" = "the deb" ] || [ ${#german[@]} = 0 ] || [ "$extent" = whole ]; then
    try_locale "$@"
  fi
  if [ "$name" = "the tarball" ] || [ "$extent" = whole ]; then
    locale=(${german[@]+"${german[@]}"})
    [ ${#german[@]} = 0 ] || try_locale "$name in a German locale" "$root" "$prefix"
    # Once only: it takes as long as all the others.
    if [ $can_isolate = yes ]; then
      found=$(inside "$root" "$hostrun" check --only-failed --host-version 2015.0 2>&1)
      [[ $found = *" passed, 0 failed" && $found = "$checked" ]] || fail "$name checks its bundle: $found"
    fi
    locale=()
  fi
}

# try_locale NAME ROOT PREFIX: what it runs and says in the locale of "inside".
try_locale() {
  local name=$1 root=$2 prefix=$3 program found
  local hostrun=$prefix/bin/hostrun documents=$prefix/share/doc/qvxcolor
  for program in first-colors components colour-space palette exceptions; do
    [ -e "$root$documents/examples/$program.bas" ] || continue
    if [ $can_isolate = yes ]; then
      inside "$root" "$hostrun" "$documents/examples/$program.bas" >"$work/out" 2>"$work/err"
    else
      env -i HOME="$root/root" LOCPATH="$root/locale" ${locale[@]+"${locale[@]}"} "$root$hostrun" "$root$documents/examples/$program.bas" >"$work/out" 2>"$work/err"
    fi
    cmp -s "$source/examples/$program.out" "$work/out" || {
      fail "$name runs $program.bas"
      diff "$source/examples/$program.out" "$work/out" | head -n 5
      cat "$work/err"
    }
  done
  if [ $can_isolate = yes ]; then
    found=$(inside "$root" "$hostrun" --version)
    [ "$found" = "hostrun $version" ] || fail "$name says its version: wanted hostrun $version, found $found"
    # The library that the trace puts before the platform lies among the private ones.
    inside "$root" "$hostrun" trace --out /tmp/trace.txt "$documents/examples/first-colors.bas" >"$work/out" 2>"$work/err" &&
      cmp -s "$source/examples/first-colors.out" "$work/out" || { fail "$name traces a program"; cat "$work/err"; }
    grep -qF 'sends +[NSColor colorWithDeviceRed: 1 green: 0.5' "$root/tmp/trace.txt" ||
      fail "$name shows the messages: $(head -n 5 "$root/tmp/trace.txt")"
    found=$(echo NSColorQVX.orangeColor | inside "$root" "$hostrun" repl 2>&1)
    [ "$found" = "NSColorQVX NSCalibratedRGBColorSpace 1 0.5 0 1" ] || fail "$name runs what is typed: $found"
    inside "$root" "$hostrun" docs --out /tmp/reference.html 2>"$work/err" || { fail "$name writes the reference"; cat "$work/err"; }
    [ -s "$root/tmp/reference.html" ] || fail "$name leaves the reference"
    inside "$root" "$hostrun" swatches --out /tmp/swatches.png 2>"$work/err" || { fail "$name draws the colours"; cat "$work/err"; }
    [ -s "$root/tmp/swatches.png" ] || fail "$name leaves the picture"
  fi
}

checked=$("$build/hostrun" check --only-failed --host-version 2015.0)
for name in deb tarball; do
  root=$work/$name
  cp -r "$base" "$root"
  mkdir -p "$root/usr/bin"
  case $name in
    deb) dpkg-deb -x "$deb" "$root" && prefix=/usr ;;
    tarball) mkdir -p "$root/opt" && tar -xf "$tarball" -C "$root/opt" && prefix=/opt/$(ls "$root/opt") ;;
  esac
  try "the $name" "$root" "$prefix"
done
# Beside the run-time, which the root directory has.
diff -rq --no-dereference --exclude=lib32 "$work/deb/usr" "$work/tarball$prefix" || fail "both packages hold the same files"

[ $failures = 0 ] || exit 1
if [ $can_isolate = yes ]; then
  echo "all of it holds, in a root directory with nothing but the run-time"
else
  echo "all of it holds, but without a root directory of its own: $(cat "$work/why")"
fi
